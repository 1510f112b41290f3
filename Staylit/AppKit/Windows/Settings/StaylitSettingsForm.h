#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"
#include "Staylit/SettingsView.h"

/// The settings form: its sections one below the other, each with its rows on a ground of its own.
/// The form is 620 points high, which is meant to be enough for text of the standard size. It grows
/// where larger text or an error needs more. Main thread only.
@interface StaylitSettingsForm : NSView

/// The form holds `actions` weakly.
- (instancetype)initWithActions:(id<StaylitSettingsActions>)actions NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

/// The first call makes the rows; later calls only change them.
- (void)showSections:(const std::vector<staylit::SettingsView::Section>&)sections;

/// Scrolls the row of `control` into sight, with its error.
- (void)scrollTo:(staylit::SettingsView::Control)control;

@end
