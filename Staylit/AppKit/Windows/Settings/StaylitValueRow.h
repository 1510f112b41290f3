#pragma once

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"

/// A label, and at the end of its line a value that cannot be changed.
@interface StaylitValueRow : StaylitSettingsRow
@end
