#pragma once

#include <string>

#include "Platform/Linux/Bus/BusMessage.h"

namespace platform {

/// The outcome of a call: true with the reply, or false with a negative errno. When the other side
/// refused the call, it also has the D-Bus name of the error.
struct BusReply {
  int error = 0;
  std::string errorName;
  BusMessage message;

  explicit operator bool() const { return error >= 0 && message; }
};

}  // namespace platform
