#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/PowerSources.h"

namespace tidewell {

/// A desktop machine without a battery, until the test sets one.
class FakePowerSources : public PowerSources {
 public:
  explicit FakePowerSources(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  bool isLowPowerModeEnabled() override {
    calls_->add("read Low Power Mode");
    return lowPowerMode;
  }

  std::optional<PowerSource> source() override {
    calls_->add("read the power source");
    return current;
  }

  std::optional<bool> isLidClosed() override { return lidClosed; }

  /// Makes the machine one that runs on this battery.
  void setBattery(std::int64_t percentage) { current = {false, percentage}; }
  /// Makes the machine one that has this battery and runs on the wall adapter.
  void setBatteryOnAC(std::int64_t percentage) { current = {true, percentage}; }

  bool lowPowerMode = false;
  std::optional<PowerSource> current;
  std::optional<bool> lidClosed;

 private:
  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell
