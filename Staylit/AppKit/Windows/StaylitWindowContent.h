#pragma once

#import <AppKit/AppKit.h>

/// What fills a window: draws one of the portable views and hands back what is done to it. Main
/// thread only.
@protocol StaylitWindowContent <NSObject>

/// What has the keyboard when the window is first shown; nil leaves it to the system.
@property(nonatomic, readonly) NSView* firstView;

/// Shows what the view says now. Needed before the window is shown: nothing is followed while it is
/// hidden.
- (void)refresh;

/// The view is about to go; from here on nothing reaches it.
- (void)disconnect;

/// The user pressed Escape. Whether that meant something in here, so that the window stays.
- (BOOL)cancel;

/// The user looks for something.
- (void)find;

@end
