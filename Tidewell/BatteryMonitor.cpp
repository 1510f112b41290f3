#include "Tidewell/BatteryMonitor.h"

#include <optional>

#include "Tidewell/Ports/Ports.h"

namespace tidewell {

PowerState BatteryMonitor::current() {
  PowerSources& sources = *InstalledPorts::current().powerSources;
  const bool lowPowerMode = sources.isLowPowerModeEnabled();
  const std::optional<PowerSource> source = sources.source();
  if (!source) return {true, 100, lowPowerMode, false};
  return {source->isOnAC, source->percentage.value_or(100), lowPowerMode, true};
}

}  // namespace tidewell
