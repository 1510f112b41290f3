#pragma once

#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

/// The heading of a list: its symbol, its title and the number of its applications, with the
/// explanation of the list below them.
@interface StaylitHeadingCell : StaylitLineCell
@end
