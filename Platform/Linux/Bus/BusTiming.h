#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>

#include "Platform/Linux/Time/BootTime.h"

namespace platform {

/// How long a bus waits. The defaults are for the program; tests take shorter times.
struct BusTiming {
  using Span = std::chrono::nanoseconds;
  /// The end of a wait. This clock stops while the machine sleeps, because the process that should
  /// answer sleeps as well.
  using Deadline = std::chrono::steady_clock::time_point;
  /// The end of a pause. This clock goes on while the machine sleeps, because the trouble may be
  /// over after a sleep.
  using Point = tidewell::Moment;

  /// The longest time for which one call blocks its caller. It includes the time for connecting.
  Span callLimit = std::chrono::seconds(1);
  /// How long nothing is tried after the first failure. Each further failure doubles the pause.
  Span firstPause = std::chrono::seconds(2);
  Span longestPause = std::chrono::seconds(60);
  /// The clock by which pauses end.
  std::function<Point()> now = BootTime::now;

  static bool isOver(Deadline deadline) { return std::chrono::steady_clock::now() >= deadline; }
  /// At least 1, because sd-bus takes 0 for its own default, which is far longer.
  static std::uint64_t microsecondsUntil(Deadline deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
        deadline - std::chrono::steady_clock::now());
    return static_cast<std::uint64_t>(std::max<std::int64_t>(1, left.count()));
  }
};

}  // namespace platform
