#pragma once

#include "Tidewell/Ports/Clock.h"

namespace platform {

/// The machine's clocks. Safe from any thread.
class SystemClock : public tidewell::Clock {
 public:
  tidewell::Moment now() override;
  tidewell::WallTime wallTime() override;
  std::chrono::nanoseconds timeAsleep() override;
  /// Sleeps for the whole time, even if signals arrive, but at most for some decades. A negative
  /// duration means no sleep.
  void sleepFor(tidewell::Seconds duration) override;
};

}  // namespace platform
