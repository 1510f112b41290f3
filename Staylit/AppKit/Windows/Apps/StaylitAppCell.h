#pragma once

#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

/// The row of an application: a button as large as the row lies over the name and the symbols.
@interface StaylitAppCell : StaylitLineCell

/// Called when the row is clicked, or pressed by VoiceOver.
@property(nonatomic, copy) void (^pressed)(StaylitAppCell* cell);

@end
