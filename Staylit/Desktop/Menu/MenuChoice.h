#pragma once

#include "Staylit/UserInterface.h"

namespace staylit {

/// Does what the menu's item with `action` does. Nothing when there is no such item.
void choose(MenuDelegate& menu, MenuItem::Action action);

}  // namespace staylit
