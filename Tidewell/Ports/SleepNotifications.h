#pragma once

#include <functional>

namespace tidewell {

/// Tells when the system goes to sleep and when it has woken. Main thread only.
class SleepNotifications {
 public:
  virtual ~SleepNotifications() = default;

  /// `willSleep` runs before the system sleeps, and so does the work that `willSleep` posts to the
  /// main loop. `didWake` runs after the system has woken. Observers stay for the life of this
  /// object, so they may refer to other objects only weakly.
  virtual void observe(std::function<void()> willSleep, std::function<void()> didWake) = 0;
};

}  // namespace tidewell
