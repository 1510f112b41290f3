#pragma once

#import "Staylit/AppKit/Windows/Settings/StaylitSettingsRow.h"

/// A switch at the end of its label's line.
@interface StaylitToggleRow : StaylitSettingsRow
@end
