#pragma once

#include <filesystem>
#include <optional>

namespace platform {

/// Where the machine's power comes from, and how full the battery is.
struct PowerSituation {
  bool hasBattery = false;
  bool onBattery = false;
  /// From 0 to 100; absent when the battery does not tell.
  std::optional<double> percentage;

  friend bool operator==(const PowerSituation&, const PowerSituation&) = default;
};

/// Reads the kernel's list of power supplies from `root`, a folder like /sys/class/power_supply.
/// Absent when there is no such folder.
///
/// Batteries of peripherals do not count. Several batteries count as one, by their contents. A file
/// that is missing or makes no sense is skipped.
std::optional<PowerSituation> readPowerSupplies(const std::filesystem::path& root);

}  // namespace platform
