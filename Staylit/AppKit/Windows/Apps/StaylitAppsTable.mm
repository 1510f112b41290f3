#import "Staylit/AppKit/Windows/Apps/StaylitAppsTable.h"

namespace {

constexpr unichar kEscape = 0x1B;
constexpr NSEventModifierFlags kModifiers = NSEventModifierFlagCommand | NSEventModifierFlagShift |
                                            NSEventModifierFlagOption | NSEventModifierFlagControl;

/// For so long after a letter, in seconds, a Space belongs to the name that is typed.
constexpr NSTimeInterval kTypingPause = 1;

/// The one character of a key that is pressed without modifiers; 0 for any other.
unichar plainKey(NSEvent* event) {
  NSString* characters = event.charactersIgnoringModifiers;
  if ((event.modifierFlags & kModifiers) != 0 || characters.length != 1) return 0;
  return [characters characterAtIndex:0];
}

/// Whether a key writes something that can stand in a name, which the arrows and their like do not.
bool isLetter(NSEvent* event) {
  constexpr NSEventModifierFlags kCommands =
      NSEventModifierFlagCommand | NSEventModifierFlagControl;
  NSString* characters = event.characters;
  if ((event.modifierFlags & kCommands) != 0 || characters.length == 0) return false;
  const unichar first = [characters characterAtIndex:0];
  const bool isFunctionKey = first >= NSUpArrowFunctionKey && first <= 0xF8FF;
  return !isFunctionKey && ![NSCharacterSet.controlCharacterSet characterIsMember:first];
}

}  // namespace

@implementation StaylitAppsTable {
  NSTimeInterval _lastLetter;
}

- (void)keyDown:(NSEvent*)event {
  switch (plainKey(event)) {
    case ' ':
      if ([self isTypingAt:event.timestamp]) return [self type:event];
      return [self choose:event];
    case NSCarriageReturnCharacter:
    case NSEnterCharacter:
      return [self choose:event];
    case kEscape:
      return [self.nextResponder doCommandBySelector:@selector(cancelOperation:)];
    default:
      [self type:event];
  }
}

- (BOOL)isTypingAt:(NSTimeInterval)time {
  return time - _lastLetter < kTypingPause;
}

- (void)type:(NSEvent*)event {
  if (isLetter(event)) _lastLetter = event.timestamp;
  [super keyDown:event];
}

- (void)choose:(NSEvent*)event {
  // A key that is held down must not empty the list.
  if (event.isARepeat) return;
  // What is typed next is another name.
  _lastLetter = 0;
  if (self.selectedRow >= 0 && self.chosen != nil) self.chosen(self.selectedRow);
}

// The first click has brought another application under the mouse, which nobody meant.
- (void)mouseDown:(NSEvent*)event {
  if (event.clickCount == 1) [super mouseDown:event];
}

@end
