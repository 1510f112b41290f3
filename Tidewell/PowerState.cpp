#include "Tidewell/PowerState.h"

namespace tidewell {

std::optional<std::string> PowerState::blockedReason(const PowerPolicy& policy) const {
  if (policy.respectLowPowerMode && lowPowerMode) return "Low Power Mode is on";
  if (!batteryTooLow(policy.batteryFloor)) return std::nullopt;
  return "battery below " + std::to_string(policy.batteryFloor) + "%";
}

bool PowerState::batteryTooLow(std::int64_t floor) const {
  return hasBattery && !onAC && percentage < floor;
}

}  // namespace tidewell
