#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Staylit/Desktop/Menu/MenuLayout.h"
#include "Staylit/Desktop/Menu/MenuProperties.h"

namespace staylit {

// Appends the parts of messages of `com.canonical.dbusmenu`. Every function returns 0 or more, or a
// negative errno when the message takes no more.

/// Appends a value as a variant.
int appendVariant(sd_bus_message* message, const MenuPropertyValue& value);
/// Appends the properties with these names as `a{sv}`; all properties when there are no names.
int appendProperties(sd_bus_message* message, const MenuProperties& properties,
                     const std::vector<std::string>& names);
/// Appends the changed properties as `a(ia{sv})`, without the items that only lost properties.
int appendUpdated(sd_bus_message* message, const std::vector<MenuLayout::ItemChange>& items);
/// Appends the names of the properties that fell back to their defaults, as `a(ias)`.
int appendRemoved(sd_bus_message* message, const std::vector<MenuLayout::ItemChange>& items);
/// Reads `ai`, each number once.
int readNumbers(sd_bus_message* message, std::vector<std::int32_t>& numbers);
/// Answers a call with as many `ai` as there are lists.
int replyWithNumbers(sd_bus_message* call, const std::vector<std::vector<std::int32_t>>& lists);

}  // namespace staylit
