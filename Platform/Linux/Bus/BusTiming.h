#pragma once

#include <chrono>
#include <functional>

#include "Platform/Linux/Time/BootTime.h"

namespace platform {

/// How patient a bus is. The defaults are for a program; a test may be less patient.
struct BusTiming {
  using Span = std::chrono::nanoseconds;
  /// When a wait ends: whoever is waited for sleeps when the machine does.
  using Deadline = std::chrono::steady_clock::time_point;
  /// When a pause ends, also if the machine sleeps meanwhile: after that things may be different.
  using Point = tidewell::Moment;

  /// The longest that one call blocks its caller, connecting included.
  Span callLimit = std::chrono::seconds(1);
  /// How long nothing is tried after a first failure; doubles with every further one.
  Span firstPause = std::chrono::seconds(2);
  Span longestPause = std::chrono::seconds(60);
  /// The clock by which pauses end.
  std::function<Point()> now = BootTime::now;
};

}  // namespace platform
