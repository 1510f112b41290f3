#pragma once

#include <functional>

namespace tidewell {

/// Tells of the system's own sleep and wake. Main thread only.
class SleepNotifications {
 public:
  virtual ~SleepNotifications() = default;

  /// `willSleep` runs before the system sleeps, and what it posts to the main loop still runs
  /// before; `didWake` after it woke. Observers stay for the life of this object: they are to hold
  /// what they touch weakly.
  virtual void observe(std::function<void()> willSleep, std::function<void()> didWake) = 0;
};

}  // namespace tidewell
