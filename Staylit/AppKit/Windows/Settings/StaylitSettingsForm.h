#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsActions.h"
#include "Staylit/SettingsView.h"

/// The settings form: its sections one below the other, each with its rows on a ground of their
/// own. 620 points high, which is meant to be enough for text of the standard size, and higher
/// where larger text or an error needs it. Main thread only.
@interface StaylitSettingsForm : NSView

/// `actions` is held weakly.
- (instancetype)initWithActions:(id<StaylitSettingsActions>)actions NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

/// The rows are made the first time; which there are never changes.
- (void)showSections:(const std::vector<staylit::SettingsView::Section>&)sections;

/// Scrolls the row of `control` into sight, with its error.
- (void)scrollTo:(staylit::SettingsView::Control)control;

@end
