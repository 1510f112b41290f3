#pragma once

#import <AppKit/AppKit.h>

#import "Staylit/AppKit/Windows/StaylitWindowContent.h"

/// A window with a title and a close button. Closing only hides it. Main thread only.
///
/// It appears in the space that the user is in. What Command and a key mean stands in the main menu
/// (`makeMainMenu`). Escape closes the window unless the content uses the key.
@interface StaylitWindow : NSWindow

/// `size` is the size of the content, in points. The window keeps `content`.
- (instancetype)initWithTitle:(NSString*)title
                         size:(NSSize)size
                      content:(NSView<StaylitWindowContent>*)content NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)flag NS_UNAVAILABLE;

/// The command for searching: the content begins with it.
- (void)findInContent:(id)sender;

@end
