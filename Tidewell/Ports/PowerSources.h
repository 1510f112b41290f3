#pragma once

#include <cstdint>
#include <optional>

namespace tidewell {

/// What feeds the machine besides the wall adapter or in its place: a battery, as a rule.
struct PowerSource {
  bool isOnAC = false;                     ///< The wall adapter feeds the machine now.
  std::optional<std::int64_t> percentage;  ///< Whole percent; absent when the source does not tell.

  friend bool operator==(const PowerSource&, const PowerSource&) = default;
};

/// Batteries, wall adapter, power-saving mode and lid. Main thread only; cheap enough for every
/// tick.
class PowerSources {
 public:
  virtual ~PowerSources() = default;

  virtual bool isLowPowerModeEnabled() = 0;

  /// The first source that can be described. Absent when there is none, or the system does not
  /// tell.
  virtual std::optional<PowerSource> source() = 0;

  /// Whether the lid of a portable computer is closed. Absent when there is no lid, or the system
  /// does not tell.
  virtual std::optional<bool> isLidClosed() { return std::nullopt; }
};

}  // namespace tidewell
