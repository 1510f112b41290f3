#pragma once

#include "Tidewell/Ports/Clock.h"

namespace platform {

/// The system's clocks. Safe from any thread.
class FoundationClock final : public tidewell::Clock {
 public:
  tidewell::Moment now() override;
  tidewell::WallTime wallTime() override;
  std::chrono::nanoseconds timeAsleep() override;
  void sleepFor(tidewell::Seconds duration) override;
};

}  // namespace platform
