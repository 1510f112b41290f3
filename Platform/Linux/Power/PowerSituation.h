#pragma once

#include <optional>

namespace platform {

/// Where the machine's power comes from, and how much of it is left.
struct PowerSituation {
  bool hasBattery = false;
  bool onBattery = false;
  /// 0 to 100; absent when the battery does not tell.
  std::optional<double> percentage;

  friend bool operator==(const PowerSituation&, const PowerSituation&) = default;
};

}  // namespace platform
