#pragma once

#import <AppKit/AppKit.h>

/// The content of a window: it draws one of the portable views and hands the user's actions back.
/// Main thread only.
@protocol StaylitWindowContent <NSObject>

/// The view that has the keyboard when the window is first shown; nil leaves the choice to the
/// system.
@property(nonatomic, readonly) NSView* firstView;

/// Shows what the portable view says now. Call it before the window is shown: a hidden window
/// follows nothing.
- (void)refresh;

/// The portable view is about to go; after this call nothing reaches it.
- (void)disconnect;

/// The user pressed Escape. Returns whether the content used the key, so that the window stays
/// open.
- (BOOL)cancel;

/// The user pressed the key for searching.
- (void)find;

@end
