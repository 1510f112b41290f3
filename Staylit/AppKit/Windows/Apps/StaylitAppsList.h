#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#include "Staylit/AppsView.h"

/// The two lists of the Choose Apps window, one below the other. What is looked at stays where it
/// is when applications come and go, and so does the selection. Main thread only.
@interface StaylitAppsList : NSScrollView <NSTableViewDataSource, NSTableViewDelegate>

/// Told of the application that was chosen, by its identifier.
@property(nonatomic, copy) void (^chosen)(NSString* identifier);

/// What has the keyboard in the list.
@property(nonatomic, readonly) NSView* keyView;

- (void)showSections:(const std::vector<staylit::AppsView::Section>&)sections;

/// Selects the first application unless one is selected, and gives the list the keyboard.
- (void)focus;

@end
