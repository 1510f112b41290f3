#pragma once

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"

/// A slider below its label, which follows the knob while it is moved.
@interface StaylitSliderRow : StaylitSettingsRow
@end
