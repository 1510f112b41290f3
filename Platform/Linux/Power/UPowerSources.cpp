#include "Platform/Linux/Power/UPowerSources.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

namespace platform {
namespace {

using tidewell::PropertyDictionary;

constexpr const char* kUPower = "org.freedesktop.UPower";
constexpr std::int64_t kBatteryType = 2;
constexpr std::int64_t kUpsType = 3;

template <class Value>
std::optional<Value> property(const PropertyDictionary& properties, std::string_view name) {
  const auto found = properties.find(name);
  if (found == properties.end()) return std::nullopt;
  const Value* value = std::get_if<Value>(&found->second);
  return value == nullptr ? std::nullopt : std::optional<Value>(*value);
}

bool savesPower(const PropertyDictionary& profiles) {
  return property<std::string>(profiles, "ActiveProfile") == "power-saver";
}

bool isBattery(const PropertyDictionary& device) {
  const auto type = property<std::int64_t>(device, "Type");
  return (type == kBatteryType || type == kUpsType) && property<bool>(device, "IsPresent") == true;
}

std::int64_t wholePercent(double percentage) {
  return percentage > 0 ? static_cast<std::int64_t>(std::min(percentage, 100.0)) : 0;
}

}  // namespace

UPowerSources::UPowerSources(Bus& systemBus, std::filesystem::path supplies)
    : supplies_(std::move(supplies)),
      daemon_(systemBus, kUPower, "/org/freedesktop/UPower", kUPower, {"OnBattery"},
              BusActivation::ifNeeded),
      displayDevice_(systemBus, kUPower, "/org/freedesktop/UPower/devices/DisplayDevice",
                     "org.freedesktop.UPower.Device", {"Type", "IsPresent", "Percentage"}),
      profiles_(systemBus, "org.freedesktop.UPower.PowerProfiles",
                "/org/freedesktop/UPower/PowerProfiles", "org.freedesktop.UPower.PowerProfiles",
                {"ActiveProfile"}),
      olderProfiles_(systemBus, "net.hadess.PowerProfiles", "/net/hadess/PowerProfiles",
                     "net.hadess.PowerProfiles", {"ActiveProfile"}) {}

bool UPowerSources::isLowPowerModeEnabled() {
  if (const PropertyDictionary* profiles = profiles_.read()) return savesPower(*profiles);
  const PropertyDictionary* older = olderProfiles_.read();
  return older != nullptr && savesPower(*older);
}

std::optional<tidewell::PowerSource> UPowerSources::source() {
  const std::optional<PowerSituation> now = situation();
  if (!now || !now->hasBattery) return std::nullopt;
  tidewell::PowerSource source{!now->onBattery, std::nullopt};
  if (now->percentage) source.percentage = wholePercent(*now->percentage);
  return source;
}

std::optional<PowerSituation> UPowerSources::situation() {
  const PropertyDictionary* daemon = daemon_.read();
  const PropertyDictionary* device = daemon == nullptr ? nullptr : displayDevice_.read();
  if (device == nullptr) return readPowerSupplies(supplies_);
  return PowerSituation{isBattery(*device), property<bool>(*daemon, "OnBattery").value_or(false),
                        property<double>(*device, "Percentage")};
}

}  // namespace platform
