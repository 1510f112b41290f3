#include "Tidewell/BatteryMonitor.h"

#include "Tidewell/Ports/Ports.h"

namespace tidewell {

std::optional<std::string> PowerState::blockedReason(const PowerPolicy& policy) const {
  if (policy.respectLowPowerMode && lowPowerMode) return "Low Power Mode is on";
  if (!batteryTooLow(policy.batteryFloor)) return std::nullopt;
  return "battery below " + std::to_string(policy.batteryFloor) + "%";
}

bool PowerState::batteryTooLow(std::int64_t floor) const {
  return hasBattery && !onAC && percentage < floor;
}

PowerState BatteryMonitor::current() {
  PowerSources& sources = *InstalledPorts::current().powerSources;
  const bool lowPowerMode = sources.isLowPowerModeEnabled();
  const std::optional<PowerSource> source = sources.source();
  if (!source) return {true, 100, lowPowerMode, false};
  return {source->isOnAC, source->percentage.value_or(100), lowPowerMode, true};
}

}  // namespace tidewell
