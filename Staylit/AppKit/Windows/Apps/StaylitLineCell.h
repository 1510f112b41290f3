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

/// The heading of a list: its symbol, its title and the number of its applications, with the
/// explanation of the list below them.
@interface StaylitHeadingCell : StaylitLineCell
@end

/// The text of a list that has no applications.
@interface StaylitEmptyCell : StaylitLineCell
@end

/// The row of an application: a button as large as the row lies over the name and the symbols.
@interface StaylitAppCell : StaylitLineCell

/// Called when the row is clicked, or pressed by VoiceOver.
@property(nonatomic, copy) void (^pressed)(StaylitAppCell* cell);

@end
