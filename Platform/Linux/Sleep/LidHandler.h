#pragma once

#include <optional>
#include <string>

#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// What a desktop calls itself that acts on the lid in logind's stead, if `inhibitor` is its lock.
///
/// Such a desktop takes the lid from logind together with the keys. A lock on the lid alone keeps
/// it from having any effect, as that of a desktop does while another screen is attached.
[[nodiscard]] std::optional<std::string> lidHandler(const ListedInhibitor& inhibitor);

}  // namespace platform
