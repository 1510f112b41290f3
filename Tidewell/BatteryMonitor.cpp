#include "Tidewell/BatteryMonitor.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <variant>

#include "Tidewell/Ports/Ports.h"

namespace tidewell {
namespace {

template <typename Value>
std::optional<Value> valueOf(const PropertyDictionary& dictionary, std::string_view key) {
  const auto found = dictionary.find(key);
  if (found == dictionary.end()) return std::nullopt;
  const Value* value = std::get_if<Value>(&found->second);
  return value == nullptr ? std::nullopt : std::optional<Value>(*value);
}

/// The first source that can be described; no further one is looked at.
std::optional<PropertyDictionary> firstDescription(PowerSources& sources) {
  const auto snapshot = sources.copySnapshot();
  if (!snapshot) return std::nullopt;
  const std::size_t count = snapshot->count().value_or(0);
  for (std::size_t index = 0; index < count; ++index) {
    if (auto description = snapshot->description(index)) return description;
  }
  return std::nullopt;
}

std::int64_t percentage(const PropertyDictionary& source) {
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

PowerState BatteryMonitor::current() {
  PowerSources& sources = *InstalledPorts::current().powerSources;
  const bool lowPowerMode = sources.isLowPowerModeEnabled();
  const auto source = firstDescription(sources);
  if (!source) return {true, 100, lowPowerMode, false};
  const bool onAC = valueOf<std::string>(*source, "Power Source State") == "AC Power";
  return {onAC, percentage(*source), lowPowerMode, true};
}

}  // namespace tidewell
