#pragma once

#import <AppKit/AppKit.h>

/// A table whose rows are chosen by Return, Enter or Space, but not by a Space within a name that
/// is typed. Of several clicks in one place it hears the first only. Escape is the window's.
@interface StaylitAppsTable : NSTableView

/// Told of the selected row when it is chosen.
@property(nonatomic, copy) void (^chosen)(NSInteger row);

@end
