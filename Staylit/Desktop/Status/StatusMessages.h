#pragma once

#include <systemd/sd-bus.h>

#include <string_view>

#include "Staylit/StatusReport.h"

namespace staylit {

/// The interface `com.staylit.Status1` as it stands on the bus. What a name of it means never
/// changes, and new properties may be added; anything else is `com.staylit.Status2`.
struct StatusInterface {
  static constexpr const char* kPath = "/com/staylit/Status";
  static constexpr const char* kName = "com.staylit.Status1";
  static constexpr const char* kChanged = "Changed";
};

/// Appends the value of the property with that name. Returns 0 or more, or a negative errno, which
/// is -EINVAL for a name that is none.
int appendStatusProperty(sd_bus_message* reply, std::string_view name, const StatusReport& report);

/// Reads the properties as `a{sv}` into `report`. Properties of unknown names or other types are
/// skipped, and every text is cleaned. False when the message is damaged or tells no state.
bool readStatus(sd_bus_message* message, StatusReport& report);

}  // namespace staylit
