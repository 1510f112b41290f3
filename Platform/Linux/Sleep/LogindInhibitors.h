#pragma once

#include <optional>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// What logind lists now, less what the session manager holds there for others. Absent when logind
/// cannot be asked or answers in an unknown shape. One bounded call.
std::optional<std::vector<ListedInhibitor>> listLogindInhibitors(Bus& systemBus);

}  // namespace platform
