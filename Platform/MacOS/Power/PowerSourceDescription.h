#pragma once

#include <cstddef>
#include <optional>

#include "Tidewell/Ports/PowerSources.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Reads the dictionary by which the system describes a power source. What is missing, or of
/// another type, reads as the harmless value: a state as on battery, a capacity as 100.
tidewell::PowerSource powerSource(const tidewell::PropertyDictionary& description);

/// The power sources as the system has them at one moment.
class PowerSourcesSnapshot {
 public:
  virtual ~PowerSourcesSnapshot() = default;

  /// How many sources there are; absent when the system gives no list of them.
  virtual std::optional<std::size_t> count() = 0;

  /// Absent when the source cannot be described. `index` is below the count.
  virtual std::optional<tidewell::PropertyDictionary> description(std::size_t index) = 0;
};

/// The first source that can be described; no further one is described. Absent when there is none,
/// and where the system gives no list, or no snapshot (null) at all.
std::optional<tidewell::PowerSource> firstPowerSource(PowerSourcesSnapshot* snapshot);

}  // namespace platform
