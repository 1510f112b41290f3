#include "Platform/Linux/Power/UPowerSources.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

namespace platform {
namespace {

using tidewell::PropertyDictionary;
using tidewell::valueOf;

constexpr const char* kUPower = "org.freedesktop.UPower";
constexpr std::int64_t kBatteryType = 2;
constexpr std::int64_t kUpsType = 3;

bool savesPower(const PropertyDictionary& profiles) {
  return valueOf<std::string>(profiles, "ActiveProfile") == "power-saver";
}

bool isBattery(const PropertyDictionary& device) {
  const auto type = valueOf<std::int64_t>(device, "Type");
  return (type == kBatteryType || type == kUpsType) && valueOf<bool>(device, "IsPresent") == true;
}

std::int64_t wholePercent(double percentage) {
  return percentage > 0 ? static_cast<std::int64_t>(std::min(percentage, 100.0)) : 0;
}

}  // namespace

UPowerSources::UPowerSources(Bus& systemBus, std::filesystem::path supplies)
    : supplies_(std::move(supplies)),
      daemon_(systemBus, kUPower, "/org/freedesktop/UPower", kUPower,
              {"OnBattery", "LidIsPresent", "LidIsClosed"}, BusActivation::ifNeeded),
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

std::optional<bool> UPowerSources::isLidClosed() {
  const PropertyDictionary* daemon = daemon_.read();
  if (daemon == nullptr || valueOf<bool>(*daemon, "LidIsPresent") != true) return std::nullopt;
  return valueOf<bool>(*daemon, "LidIsClosed");
}

std::optional<PowerSituation> UPowerSources::situation() {
  const PropertyDictionary* daemon = daemon_.read();
  const PropertyDictionary* device = daemon == nullptr ? nullptr : displayDevice_.read();
  if (device == nullptr) return readPowerSupplies(supplies_);
  return PowerSituation{isBattery(*device), valueOf<bool>(*daemon, "OnBattery").value_or(false),
                        valueOf<double>(*device, "Percentage")};
}

}  // namespace platform
