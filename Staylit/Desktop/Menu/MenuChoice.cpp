#include "Staylit/Desktop/Menu/MenuChoice.h"

#include <algorithm>

namespace staylit {

void choose(MenuDelegate& menu, MenuItem::Action action) {
  const Menu items = menu.menuNeedsUpdate();
  const auto item = std::ranges::find(items, action, &MenuItem::action);
  if (item != items.end()) menu.perform(*item);
}

}  // namespace staylit
