#pragma once

#include <optional>
#include <string>

#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// The name of the desktop that acts on the lid instead of logind, if `inhibitor` is this desktop's
/// lock.
///
/// Such a desktop takes the lid from logind together with the keys. With a lock on the lid alone,
/// closing the lid has no effect; a desktop takes such a lock while another screen is attached.
[[nodiscard]] std::optional<std::string> lidHandler(const ListedInhibitor& inhibitor);

}  // namespace platform
