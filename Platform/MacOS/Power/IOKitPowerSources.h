#pragma once

#include "Tidewell/Ports/PowerSources.h"

namespace platform {

/// The power sources as IOKit describes them, and the system's Low Power Mode.
class IOKitPowerSources final : public tidewell::PowerSources {
 public:
  bool isLowPowerModeEnabled() override;
  std::optional<tidewell::PowerSource> source() override;
};

}  // namespace platform
