#pragma once

#include <memory>
#include <utility>

#include "Platform/Linux/Bus/BusHandles.h"

namespace platform {

/// The result of `InhibitMechanism::list` for a pending call; null for an empty slot.
inline std::shared_ptr<void> asQuestion(BusSlot slot) {
  return slot ? std::make_shared<BusSlot>(std::move(slot)) : nullptr;
}

}  // namespace platform
