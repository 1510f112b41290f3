#pragma once

#include <memory>
#include <utility>

#include "Platform/Linux/Bus/BusHandles.h"

namespace platform {

/// A call whose answer is awaited, as `InhibitMechanism::list` gives it out; null for an empty
/// slot.
inline std::shared_ptr<void> asQuestion(BusSlot slot) {
  return slot ? std::make_shared<BusSlot>(std::move(slot)) : nullptr;
}

}  // namespace platform
