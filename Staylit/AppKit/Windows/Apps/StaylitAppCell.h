#pragma once

#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

/// An application: one button, as large as the row, over what it shows.
@interface StaylitAppCell : StaylitLineCell

/// Told when the row is clicked, or pressed by VoiceOver.
@property(nonatomic, copy) void (^pressed)(StaylitAppCell* cell);

@end
