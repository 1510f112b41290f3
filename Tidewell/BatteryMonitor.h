#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Tidewell/Thresholds.h"
#include "Tidewell/Words.h"

namespace tidewell {

/// The machine's power situation at one moment.
struct PowerState {
  bool onAC;                ///< The active source is the wall adapter.
  std::int64_t percentage;  ///< Battery charge, truncated to whole percent.
  bool lowPowerMode;
  bool hasBattery;  ///< A power source that describes itself was found.

  /// Why `policy` forbids a hold now, for people to read; absent when it allows one.
  [[nodiscard]] std::optional<std::string> blockedReason(
      const PowerPolicy& policy, const Words& words = Words::source()) const;

  /// Whether the machine runs on a battery below `floor` percent. Low Power Mode does not matter.
  [[nodiscard]] bool batteryTooLow(std::int64_t floor) const;

  friend bool operator==(const PowerState&, const PowerState&) = default;
};

/// Reads the machine's power situation through the installed ports.
class BatteryMonitor {
 public:
  BatteryMonitor() = delete;

  /// The situation now. Main thread only; takes a few quick queries, keeps nothing, logs nothing.
  /// What the platform does not tell reads as the harmless value: on AC, 100 %, no battery.
  static PowerState current();
};

}  // namespace tidewell
