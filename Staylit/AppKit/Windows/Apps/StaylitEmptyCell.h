#pragma once

#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

/// What stands in a list without applications.
@interface StaylitEmptyCell : StaylitLineCell
@end
