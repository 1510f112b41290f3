#pragma once

#import <AppKit/AppKit.h>

namespace staylit {

/// The main menu of a program that shows none: an accessory application has no place in the menu
/// bar, but AppKit looks here for what Command and a key mean in its windows, on every keyboard.
///
/// Settings go to `target` as `openSettings`; everything else goes to who has the keyboard, or to
/// the application. Main thread only.
NSMenu* makeMainMenu(id target);

}  // namespace staylit
