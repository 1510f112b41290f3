#pragma once

#include <functional>
#include <memory>

#include "Tidewell/Ports/Clock.h"

namespace tidewell {

/// A timer that fires until it is destroyed or invalidated. Main thread only.
class RepeatingTimer {
 public:
  virtual ~RepeatingTimer() = default;
  /// How late a firing may be, so that the system can join wake-ups.
  virtual void setTolerance(Seconds tolerance) = 0;
  /// No firing happens after this returns.
  virtual void invalidate() = 0;
};

/// The loop that runs on the main thread. Nothing throws; actions run on the main thread.
class MainLoop {
 public:
  virtual ~MainLoop() = default;

  /// First fires one `interval` from now. The caller owns the timer.
  virtual std::unique_ptr<RepeatingTimer> scheduleRepeating(Seconds interval,
                                                            std::function<void()> action) = 0;

  /// Runs `work` soon on the main thread, in the order of the calls, never before returning.
  virtual void async(std::function<void()> work) = 0;
};

}  // namespace tidewell
