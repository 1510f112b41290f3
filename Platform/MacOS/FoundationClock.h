#pragma once

#include "Tidewell/Ports/Clock.h"

namespace platform {

/// The system's clock. Safe from any thread.
class FoundationClock final : public tidewell::Clock {
 public:
  tidewell::Date now() override;
  void sleepFor(tidewell::Seconds duration) override;
};

}  // namespace platform
