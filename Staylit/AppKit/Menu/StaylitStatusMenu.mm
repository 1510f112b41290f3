#import "Staylit/AppKit/Menu/StaylitStatusMenu.h"

#include "Platform/MacOS/Text/NSText.h"

using Action = staylit::MenuItem::Action;

@implementation StaylitStatusMenu {
  staylit::MenuDelegate* _delegate;
}

- (instancetype)initWithDelegate:(staylit::MenuDelegate&)delegate {
  self = [super init];
  if (self == nil) return nil;
  _delegate = &delegate;
  _menu = [[NSMenu alloc] initWithTitle:@""];
  // Each portable item says whether it is enabled, so AppKit must not decide it.
  _menu.autoenablesItems = NO;
  _menu.delegate = self;
  return self;
}

- (void)disconnect {
  _delegate = nullptr;
}

- (void)menuNeedsUpdate:(NSMenu*)menu {
  [menu removeAllItems];
  if (_delegate == nullptr) return;
  for (const staylit::MenuItem& item : _delegate->menuNeedsUpdate()) {
    [menu addItem:[self makeItem:item]];
  }
}

- (NSMenuItem*)makeItem:(const staylit::MenuItem&)item {
  if (item.isSeparator) return [NSMenuItem separatorItem];
  NSMenuItem* made = [[NSMenuItem alloc] initWithTitle:platform::nsString(item.title)
                                                action:[self actionOf:item]
                                         keyEquivalent:platform::nsString(item.keyEquivalent)];
  // An item without a target sends its action to the application, which is what quitting needs.
  if (item.action != Action::none && item.action != Action::terminate) made.target = self;
  made.enabled = item.isEnabled;
  made.state = item.isOn ? NSControlStateValueOn : NSControlStateValueOff;
  if (!item.toolTip.empty()) made.toolTip = platform::nsString(item.toolTip);
  if (item.representedObject) made.representedObject = platform::nsString(*item.representedObject);
  return made;
}

- (SEL)actionOf:(const staylit::MenuItem&)item {
  switch (item.action) {
    case Action::none:
      return nullptr;
    case Action::toggleApp:
      return @selector(toggleApp:);
    case Action::togglePause:
      return @selector(togglePause);
    case Action::openApps:
      return @selector(openApps);
    case Action::openSettings:
      return @selector(openSettings);
    case Action::terminate:
      return @selector(terminate:);
  }
}

- (void)toggleApp:(NSMenuItem*)sender {
  id identifier = sender.representedObject;
  if (![identifier isKindOfClass:NSString.class]) return;
  staylit::MenuItem item;
  item.action = Action::toggleApp;
  item.representedObject = platform::utf8(static_cast<NSString*>(identifier));
  [self perform:item];
}

- (void)togglePause {
  [self performAction:Action::togglePause];
}

- (void)openApps {
  [self performAction:Action::openApps];
}

- (void)openSettings {
  [self performAction:Action::openSettings];
}

- (void)performAction:(Action)action {
  staylit::MenuItem item;
  item.action = action;
  [self perform:item];
}

- (void)perform:(const staylit::MenuItem&)item {
  if (_delegate != nullptr) _delegate->perform(item);
}

@end
