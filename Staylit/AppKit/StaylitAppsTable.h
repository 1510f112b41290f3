#pragma once

#import <AppKit/AppKit.h>

/// A table whose rows are chosen by Return, Enter or Space. Escape is the window's.
@interface StaylitAppsTable : NSTableView

/// Told of the selected row when it is chosen.
@property(nonatomic, copy) void (^chosen)(NSInteger row);

@end
