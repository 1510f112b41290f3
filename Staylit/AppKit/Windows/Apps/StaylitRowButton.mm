#import "Staylit/AppKit/Windows/Apps/StaylitRowButton.h"

@implementation StaylitRowButton

// The test stands here and not where the press is handled: a press by VoiceOver has no event of its
// own, so there it would be taken for the last click.
- (void)mouseDown:(NSEvent*)event {
  if (event.clickCount == 1) [super mouseDown:event];
}

@end
