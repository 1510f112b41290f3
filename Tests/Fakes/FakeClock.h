#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "Tidewell/Ports/Clock.h"

namespace tidewell {

/// Time stands still until the test advances it. A sleep advances it by its length at once.
class FakeClock : public Clock {
 public:
  Date now() override { return now_; }

  void sleepFor(Seconds duration) override {
    sleeps.push_back(duration);
    advance(duration);
    if (whileSleeping) whileSleeping();
  }

  void advance(Seconds duration) { now_ += std::chrono::round<std::chrono::nanoseconds>(duration); }

  /// Jumps, as a clock that a person sets does.
  void set(Date date) { now_ = date; }

  std::vector<Seconds> sleeps;  ///< Every sleep, in order.
  std::function<void()> whileSleeping;

 private:
  Date now_ = std::chrono::sys_days(std::chrono::year(2024) / 5 / 17) + std::chrono::hours(9);
};

}  // namespace tidewell
