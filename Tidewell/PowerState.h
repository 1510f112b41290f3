#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Tidewell/Thresholds.h"

namespace tidewell {

/// The machine's power situation at one moment.
struct PowerState {
  bool onAC;                ///< The active source is the wall adapter.
  std::int64_t percentage;  ///< Battery charge, truncated to whole percent.
  bool lowPowerMode;
  bool hasBattery;  ///< A power source that describes itself was found.

  /// Why `policy` forbids a hold now, for people to read; absent when it does not.
  [[nodiscard]] std::optional<std::string> blockedReason(const PowerPolicy& policy) const;

  /// On battery below `floor` percent. Takes no account of Low Power Mode.
  [[nodiscard]] bool batteryTooLow(std::int64_t floor) const;

  friend bool operator==(const PowerState&, const PowerState&) = default;
};

}  // namespace tidewell
