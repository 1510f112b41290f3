#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// The inhibitors that logind lists now. Absent when logind cannot be asked, or its list has an
/// unknown type. Makes one call of the bus.
std::optional<std::vector<ListedInhibitor>> listLogindInhibitors(Bus& systemBus);

/// Whether `list` contains `lock`. In logind's lists, colons separate the locks.
[[nodiscard]] bool namesLock(std::string_view list, std::string_view lock);

}  // namespace platform
