#pragma once

#import <AppKit/AppKit.h>

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsActions.h"
#include "Staylit/SettingsView.h"

/// A row of the settings form: its label with its control, then its error and its caption. There is
/// one subclass for each kind of control, and it adds the control. Main thread only.
@interface StaylitSettingsRow : NSStackView

@property(nonatomic, readonly) staylit::SettingsView::Control control;
@property(nonatomic, readonly, weak) id<StaylitSettingsActions> actions;

/// Makes the right kind of row for `row`. It does not show `row` yet.
+ (StaylitSettingsRow*)makeRow:(const staylit::SettingsView::Row&)row
                       actions:(id<StaylitSettingsActions>)actions;

- (void)show:(const staylit::SettingsView::Row&)row;

// For the subclasses.

/// The label.
@property(nonatomic, readonly) NSTextField* label;
/// The label and its control, above the notes.
- (NSView*)makeBody;
- (void)showContent:(const staylit::SettingsView::Row&)row;

@end
