#pragma once

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"

namespace platform {

/// The two connections that everything in the program shares.
struct Buses {
  /// `loop` must outlive them.
  explicit Buses(EventLoop& loop)
      : system(loop, Bus::Kind::system), session(loop, Bus::Kind::session) {}

  Bus system;
  Bus session;
};

}  // namespace platform
