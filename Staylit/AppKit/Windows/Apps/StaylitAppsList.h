#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#include "Staylit/AppsView.h"

/// The two lists of the Choose Apps window, one below the other. When applications come and go, the
/// rows that the user sees stay where they are, and so does the selection. Main thread only.
@interface StaylitAppsList : NSScrollView <NSTableViewDataSource, NSTableViewDelegate>

/// Called with the identifier of the application that was chosen.
@property(nonatomic, copy) void (^chosen)(NSString* identifier);

/// The view in the list that has the keyboard.
@property(nonatomic, readonly) NSView* keyView;

- (void)showSections:(const std::vector<staylit::AppsView::Section>&)sections;

/// Selects the first application unless one is selected already, and gives the list the keyboard.
- (void)focus;

@end
