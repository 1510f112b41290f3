#include "Staylit/AppKit/StatusItem/AppKitStatusItem.h"

#include "Platform/MacOS/Text/NSText.h"
#import "Staylit/AppKit/Menu/MainMenu.h"
#include "Staylit/AppKit/Windows/Parts/Drawing.h"

namespace staylit {
namespace {

NSImage* imageOf(const StatusItemAppearance& appearance) {
  NSImage* image =
      symbolNamed(appearance.symbol, platform::nsString(appearance.accessibilityDescription));
  [image setTemplate:YES];
  return image;
}

}  // namespace

AppKitStatusItem::AppKitStatusItem(MenuDelegate& delegate)
    : item_([NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength]),
      menu_([[StaylitStatusMenu alloc] initWithDelegate:delegate]) {
  item_.menu = menu_.menu;
  NSApp.mainMenu = makeMainMenu(menu_);
}

AppKitStatusItem::~AppKitStatusItem() {
  NSApp.mainMenu = nil;
  [menu_ disconnect];
  [NSStatusBar.systemStatusBar removeStatusItem:item_];
}

void AppKitStatusItem::show(const StatusItemAppearance& appearance) {
  NSStatusBarButton* button = item_.button;
  if (button == nil) return;
  const auto isNew = [&](auto part) { return !shown_ || (*shown_).*part != appearance.*part; };
  using Appearance = StatusItemAppearance;
  if (isNew(&Appearance::symbol) || isNew(&Appearance::accessibilityDescription)) {
    button.image = imageOf(appearance);
  }
  if (isNew(&Appearance::appearsDisabled)) button.appearsDisabled = appearance.appearsDisabled;
  if (isNew(&Appearance::toolTip)) {
    button.toolTip = platform::nsString(appearance.toolTip);
    // VoiceOver reads a value with the name, and a tool tip only later or not at all.
    button.accessibilityValue = button.toolTip;
  }
  shown_ = appearance;
}

}  // namespace staylit
