#pragma once

#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

/// The heading of a list: its symbol, its title, how many it has, and what it is below them.
@interface StaylitHeadingCell : StaylitLineCell
@end
