#pragma once

#import <AppKit/AppKit.h>

#include "Staylit/UserInterface.h"

/// The status item's menu. It is filled anew from the portable items whenever it is about to open.
/// The object owns the menu, and is its delegate and the target of its items. Main thread only.
@interface StaylitStatusMenu : NSObject <NSMenuDelegate>

@property(nonatomic, readonly) NSMenu* menu;

/// `delegate` must outlive the object or its `disconnect`.
- (instancetype)initWithDelegate:(staylit::MenuDelegate&)delegate NS_DESIGNATED_INITIALIZER;
- (instancetype)init NS_UNAVAILABLE;

/// The command of the main menu, as if it had been chosen in this menu.
- (void)openSettings;

/// After this call nothing reaches the delegate.
- (void)disconnect;

@end
