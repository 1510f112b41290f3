#pragma once

#include <optional>

#include "Tidewell/Ports/Clock.h"

namespace staylit {

/// What another start of the program asks of the one that runs.
struct ControlRequest {
  enum class Kind { pause, resume, togglePause, quit };

  Kind kind = Kind::pause;
  std::optional<tidewell::Seconds> length;  ///< Of a pause; absent without an end.

  friend bool operator==(const ControlRequest&, const ControlRequest&) = default;
};

}  // namespace staylit
