#pragma once

#include <chrono>
#include <functional>

#include "Platform/Linux/Time/BootTime.h"

namespace platform {

/// How patient a bus is. The defaults are for a program; a test may be less patient.
struct BusTiming {
  using Span = std::chrono::nanoseconds;
  /// The end of a wait. This clock stops while the machine sleeps, as does the process that is
  /// waited for.
  using Deadline = std::chrono::steady_clock::time_point;
  /// The end of a pause. This clock goes on while the machine sleeps, because things may be
  /// different afterwards.
  using Point = tidewell::Moment;

  /// The longest that one call blocks its caller, connecting included.
  Span callLimit = std::chrono::seconds(1);
  /// How long nothing is tried after the first failure. The pause doubles with every further
  /// failure.
  Span firstPause = std::chrono::seconds(2);
  Span longestPause = std::chrono::seconds(60);
  /// The clock by which pauses end.
  std::function<Point()> now = BootTime::now;
};

}  // namespace platform
