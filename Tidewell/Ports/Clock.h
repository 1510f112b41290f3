#pragma once

#include <chrono>

namespace tidewell {

/// The time that a machine goes through, awake or asleep, from some beginning on.
struct Timeline {};

/// A point of that time. Nobody can set it, so it is what everything is measured by: intervals,
/// runs, grace, and whatever is compared with an earlier moment.
using Moment = std::chrono::time_point<Timeline, std::chrono::nanoseconds>;

/// What the clock on the wall says. People and networks set it, in either direction and by any
/// amount, so it is for showing a time of day and for nothing else. It is of another type than
/// `Moment`, so that the two cannot be mixed.
using WallTime = std::chrono::sys_time<std::chrono::nanoseconds>;

/// Seconds with a fraction.
using Seconds = std::chrono::duration<double>;

/// The time, as an input.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Never jumps and never goes back, and goes on while the machine sleeps.
  virtual Moment now() = 0;
  /// For showing only.
  virtual WallTime wallTime() = 0;
  /// Blocks the calling thread.
  virtual void sleepFor(Seconds duration) = 0;
};

}  // namespace tidewell
