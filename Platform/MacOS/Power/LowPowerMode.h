#pragma once

namespace platform {

/// Whether the system's Low Power Mode is on. Main thread only.
[[nodiscard]] bool isLowPowerModeEnabled();

}  // namespace platform
