#pragma once

#import <AppKit/AppKit.h>

#import "Staylit/AppKit/Windows/StaylitWindowContent.h"

/// A titled window that can be closed, and is only hidden by it. Main thread only.
///
/// The program has no main menu, which is where the usual key equivalents come from: the window
/// knows those that make sense in it. Escape closes it unless its content has a use for it.
@interface StaylitWindow : NSWindow

/// `size` is the content's, in points. Keeps the content.
- (instancetype)initWithTitle:(NSString*)title
                         size:(NSSize)size
                      content:(NSView<StaylitWindowContent>*)content NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)flag NS_UNAVAILABLE;

@end
