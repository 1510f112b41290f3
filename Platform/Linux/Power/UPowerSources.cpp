#include "Platform/Linux/Power/UPowerSources.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "Platform/Linux/Power/PowerSupplyFiles.h"

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

/// Whole percents, in 1024ths: in hundredths the reader's division would turn 29 % into 28.
std::int64_t capacity(double percentage) {
  constexpr std::int64_t hundred = 100;
  if (!(percentage > 0)) return 0;
  const auto whole = static_cast<std::int64_t>(std::min(percentage, 100.0));
  return (whole * 1024 + hundred - 1) / hundred;
}

PropertyDictionary description(const PowerSituation& situation) {
  PropertyDictionary result{
      {"Power Source State", std::string(situation.onBattery ? "Battery Power" : "AC Power")}};
  if (situation.percentage) {
    result["Current Capacity"] = capacity(*situation.percentage);
    result["Max Capacity"] = std::int64_t{1024};
  }
  return result;
}

/// All batteries as one source, or no source.
class Snapshot : public tidewell::PowerSourcesSnapshot {
 public:
  explicit Snapshot(const PowerSituation& situation) : situation_(situation) {}

  std::optional<std::size_t> count() override { return situation_.hasBattery ? 1 : 0; }
  std::optional<PropertyDictionary> description(std::size_t /*index*/) override {
    return platform::description(situation_);
  }

 private:
  PowerSituation situation_;
};

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

std::unique_ptr<tidewell::PowerSourcesSnapshot> UPowerSources::copySnapshot() {
  const std::optional<PowerSituation> now = situation();
  return now ? std::make_unique<Snapshot>(*now) : nullptr;
}

std::optional<PowerSituation> UPowerSources::situation() {
  const PropertyDictionary* daemon = daemon_.read();
  const PropertyDictionary* device = daemon == nullptr ? nullptr : displayDevice_.read();
  if (device == nullptr) return readPowerSupplies(supplies_);
  return PowerSituation{isBattery(*device), property<bool>(*daemon, "OnBattery").value_or(false),
                        property<double>(*device, "Percentage")};
}

}  // namespace platform
