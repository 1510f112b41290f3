#pragma once

#include <cstddef>
#include <functional>
#include <optional>

#include "Tidewell/Ports/PowerSources.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Reads the dictionary by which the system describes a power source. What is missing, or of
/// another type, reads as the harmless value: a state as on battery, a capacity as 100.
tidewell::PowerSource powerSource(const tidewell::PropertyDictionary& description);

/// The first of `count` sources that `describe` can describe; no further one is described.
std::optional<tidewell::PowerSource> firstPowerSource(
    std::size_t count,
    const std::function<std::optional<tidewell::PropertyDictionary>(std::size_t index)>& describe);

}  // namespace platform
