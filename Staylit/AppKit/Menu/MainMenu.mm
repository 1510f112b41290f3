#import "Staylit/AppKit/Menu/MainMenu.h"

#include <initializer_list>

#import "Staylit/AppKit/Menu/StaylitStatusMenu.h"
#import "Staylit/AppKit/Windows/StaylitWindow.h"

namespace staylit {
namespace {

struct Command {
  NSString* title;
  SEL action;
  NSString* key;
  NSEventModifierFlags modifiers = NSEventModifierFlagCommand;
};

NSMenu* makeMenu(NSString* title, std::initializer_list<Command> commands) {
  NSMenu* menu = [[NSMenu alloc] initWithTitle:title];
  for (const Command& command : commands) {
    NSMenuItem* item = [menu addItemWithTitle:command.title
                                       action:command.action
                                keyEquivalent:command.key];
    item.keyEquivalentModifierMask = command.modifiers;
  }
  return menu;
}

NSMenu* makeApplicationMenu(id target) {
  NSMenu* menu = makeMenu(@"Staylit", {{@"Settings…", @selector(openSettings), @","},
                                       {@"Hide Staylit", @selector(hide:), @"h"},
                                       {@"Hide Others", @selector(hideOtherApplications:), @"h",
                                        NSEventModifierFlagCommand | NSEventModifierFlagOption},
                                       {@"Quit Staylit", @selector(terminate:), @"q"}});
  menu.itemArray.firstObject.target = target;
  return menu;
}

NSMenu* makeFileMenu() {
  return makeMenu(@"File", {{@"Close Window", @selector(performClose:), @"w"}});
}

NSMenu* makeEditMenu() {
  return makeMenu(@"Edit", {{@"Undo", @selector(undo:), @"z"},
                            {@"Redo", @selector(redo:), @"z",
                             NSEventModifierFlagCommand | NSEventModifierFlagShift},
                            {@"Cut", @selector(cut:), @"x"},
                            {@"Copy", @selector(copy:), @"c"},
                            {@"Paste", @selector(paste:), @"v"},
                            {@"Select All", @selector(selectAll:), @"a"},
                            {@"Find", @selector(findInContent:), @"f"}});
}

}  // namespace

NSMenu* makeMainMenu(id target) {
  NSMenu* main = [[NSMenu alloc] initWithTitle:@""];
  for (NSMenu* menu in @[ makeApplicationMenu(target), makeFileMenu(), makeEditMenu() ]) {
    NSMenuItem* item = [main addItemWithTitle:menu.title action:nullptr keyEquivalent:@""];
    item.submenu = menu;
  }
  return main;
}

}  // namespace staylit
