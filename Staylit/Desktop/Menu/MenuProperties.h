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

/// What a property of a menu item holds; nothing but these types occurs.
using MenuPropertyValue = std::variant<std::string, bool, std::int32_t, MenuShortcut>;

struct MenuProperty {
  const char* name;
  MenuPropertyValue value;
  friend bool operator==(const MenuProperty& left, const MenuProperty& right) {
    return std::string_view(left.name) == right.name && left.value == right.value;
  }
};

using MenuProperties = std::vector<MenuProperty>;

/// What `com.canonical.dbusmenu` says of an item: only what differs from the defaults. All text is
/// well formed, whatever the item's is.
MenuProperties menuProperties(const MenuItem& item);
/// The same of the root, which holds all items.
MenuProperties rootMenuProperties();

/// What a property is when nothing is said of it; absent for one that does not exist.
std::optional<MenuPropertyValue> defaultMenuProperty(std::string_view name);

}  // namespace staylit
