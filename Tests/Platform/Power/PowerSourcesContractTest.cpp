#include "Tests/Platform/Power/PowerSourcesContract.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Linux/Power/UPowerSources.h"
#include "Tests/Fakes/FakePowerSources.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakePropertyService.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using Source = std::optional<tidewell::PowerSource>;

/// Buses with the kernel's files beside them, and nobody else who tells of power.
class SupplyFilesMachine : public testing::BusMachine {
 public:
  SupplyFilesMachine() {
    if (missing() == nullptr) sources_ = std::make_unique<UPowerSources>(*systemBus, files_.path());
  }

  UPowerSources& sources() { return *sources_; }

  void feed(const Source& source) {
    std::filesystem::remove_all(files_.path() / "BAT0");
    if (!source) return;
    files_.write("BAT0/type", "Battery\n");
    files_.write("BAT0/status", source->isOnAC ? "Charging\n" : "Discharging\n");
    files_.write("BAT0/capacity", std::to_string(source->percentage.value()) + "\n");
  }

 private:
  testing::TemporaryFolder files_;
  std::unique_ptr<UPowerSources> sources_;
};

/// The same with UPower, which knows better than the files.
class UPowerMachine : public SupplyFilesMachine {
 public:
  UPowerMachine() {
    if (missing() != nullptr) return;
    upower_.emplace(systemDaemon->address(), kUPower);
    upower_->set(kPath, kUPower, {{"OnBattery", false}});
    upower_->set(kDevicePath, kDevice, {{"Type", 0U}, {"IsPresent", false}, {"Percentage", 0.0}});
  }

  void feed(const Source& source) {
    upower_->change(kPath, kUPower, "OnBattery", source && !source->isOnAC);
    upower_->change(kDevicePath, kDevice, "Type", source ? 2U : 0U);
    upower_->change(kDevicePath, kDevice, "IsPresent", source.has_value());
    upower_->change(kDevicePath, kDevice, "Percentage",
                    source ? static_cast<double>(source->percentage.value()) : 0.0);
  }

 private:
  static constexpr const char* kUPower = "org.freedesktop.UPower";
  static constexpr const char* kPath = "/org/freedesktop/UPower";
  static constexpr const char* kDevicePath = "/org/freedesktop/UPower/devices/DisplayDevice";
  static constexpr const char* kDevice = "org.freedesktop.UPower.Device";

  std::optional<testing::FakePropertyService> upower_;
};

class FakeMachine {
 public:
  static const char* missing() { return nullptr; }
  tidewell::FakePowerSources& sources() { return sources_; }
  void feed(const Source& source) { sources_.current = source; }
  static bool settles(const std::function<bool()>& condition) { return condition(); }

 private:
  tidewell::FakePowerSources sources_;
};

using Machines = ::testing::Types<FakeMachine, SupplyFilesMachine, UPowerMachine>;
INSTANTIATE_TYPED_TEST_SUITE_P(FakeFilesAndUPower, PowerSourcesContract, Machines);

}  // namespace
}  // namespace platform
