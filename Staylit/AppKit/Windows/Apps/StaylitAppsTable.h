#pragma once

#import <AppKit/AppKit.h>

/// A table whose rows are chosen by Return, Enter or Space. A Space within a name that is being
/// typed chooses nothing. Of several clicks in one place the table hears only the first. Escape
/// goes on to the window.
@interface StaylitAppsTable : NSTableView

/// Called with the selected row when the user chooses it.
@property(nonatomic, copy) void (^chosen)(NSInteger row);

@end
