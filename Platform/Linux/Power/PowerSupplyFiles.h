#pragma once

#include <filesystem>
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

/// Reads the kernel's list of power supplies below `root`, which is laid out as
/// /sys/class/power_supply is. Absent when there is no such folder.
///
/// Batteries of peripherals do not count. Several batteries are taken together by what they hold. A
/// file that is missing or makes no sense is passed over.
std::optional<PowerSituation> readPowerSupplies(const std::filesystem::path& root);

}  // namespace platform
