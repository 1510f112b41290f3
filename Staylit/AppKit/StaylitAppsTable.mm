#import "Staylit/AppKit/StaylitAppsTable.h"

namespace {

constexpr unichar kEscape = 0x1B;
constexpr NSEventModifierFlags kModifiers = NSEventModifierFlagCommand | NSEventModifierFlagShift |
                                            NSEventModifierFlagOption | NSEventModifierFlagControl;

/// The one character of a key that is pressed without modifiers; 0 for any other.
unichar plainKey(NSEvent* event) {
  NSString* characters = event.charactersIgnoringModifiers;
  if ((event.modifierFlags & kModifiers) != 0 || characters.length != 1) return 0;
  return [characters characterAtIndex:0];
}

}  // namespace

@implementation StaylitAppsTable

- (void)keyDown:(NSEvent*)event {
  switch (plainKey(event)) {
    case NSCarriageReturnCharacter:
    case NSEnterCharacter:
    case ' ':
      // A key that is held down must not empty the list.
      if (!event.isARepeat) [self choose];
      return;
    case kEscape:
      [self.nextResponder doCommandBySelector:@selector(cancelOperation:)];
      return;
    default:
      [super keyDown:event];
  }
}

- (void)choose {
  if (self.selectedRow >= 0 && self.chosen != nil) self.chosen(self.selectedRow);
}

@end
