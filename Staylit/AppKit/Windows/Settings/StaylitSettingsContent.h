#pragma once

#import <AppKit/AppKit.h>

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"
#import "Staylit/AppKit/Windows/StaylitWindowContent.h"
#include "Staylit/SettingsView.h"

/// The content of the Settings window: the form, which is higher than the window and scrolls in it.
/// Main thread only.
@interface StaylitSettingsContent : NSScrollView <StaylitWindowContent, StaylitSettingsActions>

/// `view` must outlive the object or its `disconnect`.
- (instancetype)initWithView:(staylit::SettingsView&)view NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithFrame:(NSRect)frame NS_UNAVAILABLE;
- (instancetype)initWithCoder:(NSCoder*)coder NS_UNAVAILABLE;

@end
