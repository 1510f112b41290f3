#pragma once

#include <ostream>

#include "Staylit/EngineStatus.h"

namespace staylit {

/// Lets a failed comparison show the status in words.
inline void PrintTo(const EngineStatus& status, std::ostream* stream) {
  *stream << status.summary();
}

}  // namespace staylit
