#import "Staylit/AppKit/Windows/Apps/StaylitRowButton.h"

@implementation StaylitRowButton

// Here and not where it is pressed: what VoiceOver presses has no event of its own, and would be
// taken for the last click.
- (void)mouseDown:(NSEvent*)event {
  if (event.clickCount == 1) [super mouseDown:event];
}

@end
