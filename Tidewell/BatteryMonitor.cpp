#include "Tidewell/BatteryMonitor.h"

#include "Tidewell/Ports/Ports.h"

namespace tidewell {

std::optional<std::string> PowerState::blockedReason(const PowerPolicy& policy,
                                                     const Words& words) const {
  // TRANSLATORS: stands after "Not holding — ". It is the system's saving of power.
  if (policy.respectLowPowerMode && lowPowerMode) return words.phrase("Low Power Mode is on");
  if (!batteryTooLow(policy.batteryFloor)) return std::nullopt;
  // TRANSLATORS: stands after "Not holding — ".
  return words.phrase("battery below {percent}%",
                      {{"percent", std::to_string(policy.batteryFloor)}});
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
