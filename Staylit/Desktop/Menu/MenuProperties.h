#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Staylit/Menu.h"

namespace staylit {

/// The keys that are pressed together, as "Control" and "p".
using MenuShortcut = std::vector<std::string>;

/// The value of a property of a menu item, in one of the types that occur.
using MenuPropertyValue = std::variant<std::string, bool, std::int32_t, MenuShortcut>;

struct MenuProperty {
  const char* name;
  MenuPropertyValue value;
  friend bool operator==(const MenuProperty& left, const MenuProperty& right) {
    return std::string_view(left.name) == right.name && left.value == right.value;
  }
};

using MenuProperties = std::vector<MenuProperty>;

/// The properties of an item in `com.canonical.dbusmenu`, without those that have their default.
/// All texts are valid UTF-8, even where the item's own are not.
MenuProperties menuProperties(const MenuItem& item);
/// The same for the root, which holds all items.
MenuProperties rootMenuProperties();

/// The default of a property; absent when there is no property of that name.
std::optional<MenuPropertyValue> defaultMenuProperty(std::string_view name);

}  // namespace staylit
