#import "Staylit/AppKit/Windows/Apps/StaylitAppsTable.h"

namespace {

constexpr unichar kEscape = 0x1B;
constexpr NSEventModifierFlags kTypingModifiers =
    NSEventModifierFlagCommand | NSEventModifierFlagShift | NSEventModifierFlagOption |
    NSEventModifierFlagControl;

/// For so many seconds after a letter, a Space belongs to the name that is being typed.
constexpr NSTimeInterval kTypingPause = 1;

/// The one character of a key that is pressed without modifiers; 0 for every other key.
unichar plainKey(NSEvent* event) {
  NSString* characters = event.charactersIgnoringModifiers;
  if ((event.modifierFlags & kTypingModifiers) != 0 || characters.length != 1) return 0;
  return [characters characterAtIndex:0];
}

/// Whether a key writes a character that can stand in a name. The arrow keys, for example, do not.
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
  // The next letter begins another name.
  _lastLetter = 0;
  if (self.selectedRow >= 0 && self.chosen != nil) self.chosen(self.selectedRow);
}

// The first click has put another application under the mouse, and the user did not mean that one.
- (void)mouseDown:(NSEvent*)event {
  if (event.clickCount == 1) [super mouseDown:event];
}

@end
