#pragma once

#import <AppKit/AppKit.h>

#include <cstdint>

#include "Staylit/SettingsView.h"

/// Hears of what the user does to the rows of the settings form. Main thread only.
@protocol StaylitSettingsActions <NSObject>

- (void)control:(staylit::SettingsView::Control)control movedTo:(std::int64_t)value;
- (void)control:(staylit::SettingsView::Control)control turnedOn:(BOOL)on;

@end

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

/// A slider below its label. The label follows the knob while the user moves it.
@interface StaylitSliderRow : StaylitSettingsRow
@end

/// A switch at the end of its label's line.
@interface StaylitToggleRow : StaylitSettingsRow
@end

/// A label, and at the end of its line a value that cannot be changed.
@interface StaylitValueRow : StaylitSettingsRow
@end
