#pragma once

#include "Staylit/UserInterface.h"

namespace staylit {

/// Does what the item of the menu with this action does. Nothing when there is none.
void choose(MenuDelegate& menu, MenuItem::Action action);

}  // namespace staylit
