#pragma once

#include <string>

#include "Platform/Linux/Bus/BusMessage.h"

namespace platform {

/// What became of a call: true with the reply, or false with a negative errno and, when it was the
/// other side that refused, the D-Bus name of its error.
struct BusReply {
  int error = 0;
  std::string errorName;
  BusMessage message;

  explicit operator bool() const { return error >= 0 && message; }
};

}  // namespace platform
