#pragma once

#import "Staylit/AppKit/StaylitLineCell.h"

/// What stands in a list without applications.
@interface StaylitEmptyCell : StaylitLineCell
@end
