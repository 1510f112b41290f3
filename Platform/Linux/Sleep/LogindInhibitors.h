#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// What logind lists now. Absent when logind
/// cannot be asked or answers in an unknown shape. One bounded call.
std::optional<std::vector<ListedInhibitor>> listLogindInhibitors(Bus& systemBus);

/// Whether `lock` is among logind's list of locks, which colons part.
[[nodiscard]] bool namesLock(std::string_view list, std::string_view lock);

}  // namespace platform
