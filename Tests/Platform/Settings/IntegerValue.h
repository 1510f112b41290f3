#pragma once

#include <cstdint>

#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Makes a value from a plain number, which alone would become a value of another type.
inline tidewell::PropertyValue integer(std::int64_t value) {
  return value;
}

}  // namespace platform
