#pragma once

#include "Tidewell/Ports/Clock.h"

namespace platform {

/// The machine's clocks. Safe from any thread.
class SystemClock : public tidewell::Clock {
 public:
  tidewell::Moment now() override;
  tidewell::WallTime wallTime() override;
  /// Sleeps the whole time, whatever signals arrive; some decades at most. Does not sleep for a
  /// negative duration.
  void sleepFor(tidewell::Seconds duration) override;
};

}  // namespace platform
