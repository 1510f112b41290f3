#pragma once

#include <chrono>
#include <functional>

namespace platform {

/// How patient a bus is. The defaults are for a program; a test may be less patient.
struct BusTiming {
  using Point = std::chrono::steady_clock::time_point;
  using Span = std::chrono::steady_clock::duration;

  /// The longest that one call blocks its caller, connecting included.
  Span callLimit = std::chrono::seconds(1);
  /// How long nothing is tried after a first failure; doubles with every further one.
  Span firstPause = std::chrono::seconds(2);
  Span longestPause = std::chrono::seconds(60);
  /// The monotonic clock by which pauses end.
  std::function<Point()> now = [] { return std::chrono::steady_clock::now(); };
};

}  // namespace platform
