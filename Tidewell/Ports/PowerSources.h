#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "Tidewell/Ports/PropertyValue.h"

namespace tidewell {

/// All power sources at one moment. Owned by the reader, which drops it when done.
class PowerSourcesSnapshot {
 public:
  virtual ~PowerSourcesSnapshot() = default;

  /// How many sources there are; absent when the platform gave no list.
  virtual std::optional<std::size_t> count() = 0;

  /// Describes the source at `index` < `count()`; absent when it cannot be described. The keys
  /// that matter: "Power Source State" (text, "AC Power" or another), "Current Capacity" and
  /// "Max Capacity" (integers in one unit of the platform's choice).
  virtual std::optional<PropertyDictionary> description(std::size_t index) = 0;
};

/// Batteries, wall adapter and power-saving mode. Main thread only; cheap enough for every tick.
class PowerSources {
 public:
  virtual ~PowerSources() = default;

  virtual bool isLowPowerModeEnabled() = 0;

  /// Null when the platform offers no such information.
  virtual std::unique_ptr<PowerSourcesSnapshot> copySnapshot() = 0;
};

}  // namespace tidewell
