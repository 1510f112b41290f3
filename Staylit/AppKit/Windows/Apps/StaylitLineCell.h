#pragma once

#import <AppKit/AppKit.h>

#include "Staylit/AppsLines.h"

/// The view of one line of the Choose Apps window. There is one subclass for each kind of line. Its
/// `fittingSize` tells how high a line is with its present text. Main thread only.
@interface StaylitLineCell : NSTableCellView

/// A cell for lines of `kind`. It shows no line yet.
+ (StaylitLineCell*)cellForKind:(staylit::AppsLine::Kind)kind;

- (void)show:(const staylit::AppsLine&)line;

@end
