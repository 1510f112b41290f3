#pragma once

#include <functional>
#include <memory>

#include "Tidewell/Ports/Clock.h"

namespace tidewell {

/// A timer that fires until it is destroyed or invalidated. Main thread only.
class RepeatingTimer {
 public:
  virtual ~RepeatingTimer() = default;
  /// How much later the timer may fire, so that the system can join wake-ups.
  virtual void setTolerance(Seconds tolerance) = 0;
  /// The timer fires no more once this has returned.
  virtual void invalidate() = 0;
};

/// The loop that runs on the main thread, and all actions in it. Main thread only; nothing throws.
class MainLoop {
 public:
  virtual ~MainLoop() = default;

  /// The timer first fires one `interval` from now. The caller owns it.
  virtual std::unique_ptr<RepeatingTimer> scheduleRepeating(Seconds interval,
                                                            std::function<void()> action) = 0;

  /// Runs `work` soon, never before this function returns. Several pieces of work run in the order
  /// in which they were passed here.
  virtual void async(std::function<void()> work) = 0;
};

}  // namespace tidewell
