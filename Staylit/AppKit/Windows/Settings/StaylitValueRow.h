#pragma once

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"

/// A label with a value that cannot be changed at the end of its line.
@interface StaylitValueRow : StaylitSettingsRow
@end
