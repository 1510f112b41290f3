#include "Platform/MacOS/Power/PowerSourceDescription.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

namespace platform {
namespace {

using tidewell::valueOf;

std::int64_t percentage(const tidewell::PropertyDictionary& source) {
  const auto current = valueOf<std::int64_t>(source, "Current Capacity");
  const auto max = valueOf<std::int64_t>(source, "Max Capacity");
  if (max && *max < 1) return 100;
  const double percent = (current ? static_cast<double>(*current) : 100.0) /
                         static_cast<double>(max.value_or(100)) * 100.0;
  // A damaged battery may report anything; no charge is beyond an integer.
  constexpr double kLimit = 9.0e18;
  return static_cast<std::int64_t>(std::clamp(std::trunc(percent), -kLimit, kLimit));
}

}  // namespace

tidewell::PowerSource powerSource(const tidewell::PropertyDictionary& description) {
  const bool isOnAC = valueOf<std::string>(description, "Power Source State") == "AC Power";
  return {isOnAC, percentage(description)};
}

std::optional<tidewell::PowerSource> firstPowerSource(PowerSourcesSnapshot* snapshot) {
  const std::size_t count = snapshot == nullptr ? 0 : snapshot->count().value_or(0);
  for (std::size_t index = 0; index < count; ++index) {
    if (const auto description = snapshot->description(index)) return powerSource(*description);
  }
  return std::nullopt;
}

}  // namespace platform
