#pragma once

#include <systemd/sd-bus.h>

#include <string>
#include <vector>

#include "Staylit/Desktop/Menu/MenuLayout.h"
#include "Staylit/Desktop/Menu/MenuProperties.h"

namespace staylit {

/// The pieces that messages of `com.canonical.dbusmenu` are made of. All answer 0 or more, or a
/// negative errno when the message takes no more.

/// Appends a value as a variant.
int appendVariant(sd_bus_message* message, const MenuPropertyValue& value);
/// Appends `a{sv}`, of the properties with these names; of all when there are no names.
int appendProperties(sd_bus_message* message, const MenuProperties& properties,
                     const std::vector<std::string>& names);
/// Appends `a(ia{sv})`: what changed, without the items that only lost something.
int appendUpdated(sd_bus_message* message, const std::vector<MenuLayout::ItemChange>& items);
/// Appends `a(ias)`: what fell back to its default.
int appendRemoved(sd_bus_message* message, const std::vector<MenuLayout::ItemChange>& items);

}  // namespace staylit
