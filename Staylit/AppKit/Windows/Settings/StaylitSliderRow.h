#pragma once

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"

/// A slider below its label. The label follows the knob while the user moves it.
@interface StaylitSliderRow : StaylitSettingsRow
@end
