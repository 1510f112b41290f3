#pragma once

#import <AppKit/AppKit.h>

/// A button in a row that another row may take the place of when it is pressed: of several clicks
/// in one place, it hears the first only. Main thread only.
@interface StaylitRowButton : NSButton
@end
