#pragma once

#import <AppKit/AppKit.h>

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsActions.h"
#include "Staylit/SettingsView.h"

/// A row of the settings form: its label with its control, then its error and its caption. There is
/// one class for each kind of control, which adds the control. Main thread only.
@interface StaylitSettingsRow : NSStackView

@property(nonatomic, readonly) staylit::SettingsView::Control control;
@property(nonatomic, readonly, weak) id<StaylitSettingsActions> actions;

/// The row for what `row` says, which it does not show yet.
+ (StaylitSettingsRow*)makeRow:(const staylit::SettingsView::Row&)row
                       actions:(id<StaylitSettingsActions>)actions;

- (void)show:(const staylit::SettingsView::Row&)row;

// For the kinds of rows.

/// The label.
@property(nonatomic, readonly) NSTextField* label;
/// The label and its control, above the notes.
- (NSView*)makeBody;
- (void)showContent:(const staylit::SettingsView::Row&)row;

@end
