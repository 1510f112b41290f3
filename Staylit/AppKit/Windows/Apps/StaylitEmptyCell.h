#pragma once

#import "Staylit/AppKit/Windows/Apps/StaylitLineCell.h"

/// The text of a list that has no applications.
@interface StaylitEmptyCell : StaylitLineCell
@end
