#pragma once

#import <AppKit/AppKit.h>

#include "Staylit/AppsLines.h"

/// The view of one line of the Choose Apps window; there is one class for each kind of line. Its
/// height follows from what it shows, for which `fittingSize` is asked. Main thread only.
@interface StaylitLineCell : NSTableCellView

/// A cell for lines of that kind, which shows none yet.
+ (StaylitLineCell*)cellForKind:(staylit::AppsLine::Kind)kind;

- (void)show:(const staylit::AppsLine&)line;

@end
