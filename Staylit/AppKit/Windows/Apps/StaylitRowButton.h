#pragma once

#import <AppKit/AppKit.h>

/// A button in a row whose place another row may take when the button is pressed. Of several clicks
/// in one place, the button hears only the first. Main thread only.
@interface StaylitRowButton : NSButton
@end
