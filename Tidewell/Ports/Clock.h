#pragma once

#include <chrono>

namespace tidewell {

/// A point on the wall clock.
using Date = std::chrono::sys_time<std::chrono::nanoseconds>;
/// Seconds with a fraction.
using Seconds = std::chrono::duration<double>;

/// The time, as an input.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Wall-clock time; it may jump in either direction.
  virtual Date now() = 0;
  /// Blocks the calling thread.
  virtual void sleepFor(Seconds duration) = 0;
};

}  // namespace tidewell
