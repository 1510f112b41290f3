#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "Tidewell/Ports/Clock.h"

namespace tidewell {

/// A clock that stands still until the test advances it. A sleep advances it at once.
class FakeClock : public Clock {
 public:
  Moment now() override { return now_; }
  WallTime wallTime() override { return wallTime_; }

  std::chrono::nanoseconds timeAsleep() override { return asleep_; }

  void sleepFor(Seconds duration) override {
    sleeps.push_back(duration);
    advance(duration);
    if (whileSleeping) whileSleeping();
  }

  /// Time goes by on both clocks.
  void advance(Seconds duration) {
    now_ += nanoseconds(duration);
    wallTime_ += nanoseconds(duration);
  }

  /// As `advance`, while the machine sleeps.
  void advanceAsleep(Seconds duration) {
    advance(duration);
    asleep_ += nanoseconds(duration);
  }

  /// Somebody sets the wall clock, forward or back.
  void stepWallTime(Seconds length) { wallTime_ += nanoseconds(length); }

  std::vector<Seconds> sleeps;  ///< Every sleep, in order.
  std::function<void()> whileSleeping;

 private:
  static std::chrono::nanoseconds nanoseconds(Seconds duration) {
    return std::chrono::round<std::chrono::nanoseconds>(duration);
  }

  std::chrono::nanoseconds asleep_{};
  Moment now_{std::chrono::hours(3)};
  WallTime wallTime_ =
      std::chrono::sys_days(std::chrono::year(2024) / 5 / 17) + std::chrono::hours(9);
};

}  // namespace tidewell
