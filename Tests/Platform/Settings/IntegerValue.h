#pragma once

#include <cstdint>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// A plain number in a test would be a value of another type.
inline tidewell::PropertyValue integer(std::int64_t value) {
  return value;
}

}  // namespace platform
