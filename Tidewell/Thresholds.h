#pragma once

#include <cstdint>
#include <utility>

#include "Tidewell/TextMap.h"

namespace tidewell {

/// What an application must reach to count as working. Built afresh from the settings each tick.
struct ActivityThresholds {
  ActivityThresholds(double cpuPercentOfOneCore, double diskKBPerSecond, double netKBPerSecond,
                     std::int64_t sustain, TextSet ignoredApps, bool honorAssertions)
      : cpuPercent(cpuPercentOfOneCore),
        diskKBps(diskKBPerSecond),
        netKBps(netKBPerSecond),
        sustainSeconds(sustain),
        ignored(std::move(ignoredApps)),
        honorAppAssertions(honorAssertions) {}

  double cpuPercent;  ///< Of one core; for every application without a CPU floor of its own.
  double diskKBps;
  double netKBps;
  std::int64_t sustainSeconds;  ///< How long it must stay over a threshold to count as busy.
  TextSet ignored;              ///< Application keys that never count, whatever they do.
  bool honorAppAssertions;      ///< Whether other programs' own sleep assertions count.
};

/// The user's rules for when power forbids a hold, whatever works.
struct PowerPolicy {
  std::int64_t batteryFloor;  ///< Percent; there is no hold on a battery below it.
  bool respectLowPowerMode;   ///< Whether there is no hold in Low Power Mode.
  bool keepScreenOn;          ///< Whether a hold also keeps the display awake.
};

}  // namespace tidewell
