#include "Staylit/AppKit/AppKitStatusItem.h"

#include "Platform/MacOS/NSText.h"
#include "Staylit/AppKit/Drawing.h"

namespace staylit {

AppKitStatusItem::AppKitStatusItem(MenuDelegate& delegate)
    : item_([NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength]),
      menu_([[StaylitStatusMenu alloc] initWithDelegate:delegate]) {
  item_.menu = menu_.menu;
}

AppKitStatusItem::~AppKitStatusItem() {
  [menu_ disconnect];
  [NSStatusBar.systemStatusBar removeStatusItem:item_];
}

void AppKitStatusItem::show(const StatusItemAppearance& appearance) {
  NSStatusBarButton* button = item_.button;
  if (button == nil) return;
  NSImage* image =
      symbolNamed(appearance.symbol, platform::nsString(appearance.accessibilityDescription));
  [image setTemplate:YES];
  button.image = image;
  button.appearsDisabled = appearance.appearsDisabled;
  button.toolTip = platform::nsString(appearance.toolTip);
}

}  // namespace staylit
