#import "Staylit/AppKit/Windows/StaylitWindow.h"

namespace {

constexpr NSEventModifierFlags kModifiers = NSEventModifierFlagCommand | NSEventModifierFlagShift |
                                            NSEventModifierFlagOption | NSEventModifierFlagControl;

/// The action that the main menu of other programs would send for a key; null for a key without a
/// meaning.
SEL commandFor(NSEvent* event) {
  const NSEventModifierFlags modifiers = event.modifierFlags & kModifiers;
  // With Command down, this is the Latin letter on other keyboards too.
  NSString* key = event.characters.lowercaseString;
  if (modifiers == (NSEventModifierFlagCommand | NSEventModifierFlagShift)) {
    return [key isEqualToString:@"z"] ? @selector(redo:) : nullptr;
  }
  if (modifiers != NSEventModifierFlagCommand) return nullptr;
  NSDictionary<NSString*, NSString*>* commands = @{
    @"x" : @"cut:",
    @"c" : @"copy:",
    @"v" : @"paste:",
    @"a" : @"selectAll:",
    @"z" : @"undo:",
    @"f" : @"findInContent:",
    @"w" : @"performClose:",
  };
  NSString* command = commands[key];
  return command == nil ? nullptr : NSSelectorFromString(command);
}

}  // namespace

@implementation StaylitWindow {
  __weak NSView<StaylitWindowContent>* _content;
}

- (instancetype)initWithTitle:(NSString*)title
                         size:(NSSize)size
                      content:(NSView<StaylitWindowContent>*)content {
  self = [super initWithContentRect:NSMakeRect(0, 0, size.width, size.height)
                          styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                            backing:NSBackingStoreBuffered
                              defer:NO];
  if (self == nil) return nil;
  self.title = title;
  self.releasedWhenClosed = NO;
  // The system has nothing to restore at the next start: only the menu opens a window.
  self.restorable = NO;
  _content = content;
  self.contentView = content;
  self.autorecalculatesKeyViewLoop = YES;
  self.initialFirstResponder = content.firstView;
  return self;
}

- (void)cancelOperation:(id)sender {
  if (![_content cancel]) [self performClose:sender];
}

- (BOOL)performKeyEquivalent:(NSEvent*)event {
  if ([super performKeyEquivalent:event]) return YES;
  const SEL command = commandFor(event);
  return command != nullptr && [NSApp sendAction:command to:nil from:self];
}

- (void)findInContent:(id)__unused sender {
  [_content find];
}

@end
