#pragma once

#include <chrono>

namespace tidewell {

/// The clock that `Moment` belongs to. It runs on while the machine sleeps, and nobody can set it.
struct Timeline {};

/// A point in time for everything that is measured or compared: intervals, runs, grace periods.
using Moment = std::chrono::time_point<Timeline, std::chrono::nanoseconds>;

/// What the wall clock says. People and networks set it, in either direction and by any amount, so
/// it serves to show a time of day and for nothing else. It has another type than `Moment`, so that
/// nobody can mix the two.
using WallTime = std::chrono::sys_time<std::chrono::nanoseconds>;

/// Seconds with a fraction.
using Seconds = std::chrono::duration<double>;

/// The time, as an input. Safe from any thread.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Never jumps, never goes back, and runs on while the machine sleeps.
  virtual Moment now() = 0;
  /// Only to be shown.
  virtual WallTime wallTime() = 0;
  /// For how much of the time that `now` counts the machine slept. Only differences between two
  /// answers mean something.
  virtual std::chrono::nanoseconds timeAsleep() = 0;
  /// Blocks the calling thread.
  virtual void sleepFor(Seconds duration) = 0;
};

}  // namespace tidewell
