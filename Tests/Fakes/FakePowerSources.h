#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/PowerSources.h"

namespace tidewell {

/// A desktop machine without a battery, until the test adds sources.
class FakePowerSources : public PowerSources {
 public:
  explicit FakePowerSources(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  bool isLowPowerModeEnabled() override {
    calls_->add("read Low Power Mode");
    return lowPowerMode;
  }

  std::unique_ptr<PowerSourcesSnapshot> copySnapshot() override {
    calls_->add("copy power sources");
    if (!hasSnapshot) return nullptr;
    return std::make_unique<Snapshot>(*this);
  }

  /// Makes the machine one with this battery only, full at 100.
  void setBattery(std::int64_t charge, const std::string& state) {
    sources = {PropertyDictionary{{"Power Source State", state},
                                  {"Current Capacity", charge},
                                  {"Max Capacity", std::int64_t{100}}}};
  }

  bool lowPowerMode = false;
  bool hasSnapshot = true;
  bool hasList = true;
  /// Absent: that source cannot be described.
  std::vector<std::optional<PropertyDictionary>> sources;

  std::vector<std::size_t> described;  ///< The index of every description asked for.
  int liveSnapshots = 0;

 private:
  class Snapshot : public PowerSourcesSnapshot {
   public:
    explicit Snapshot(FakePowerSources& owner) : owner_(owner) { ++owner_.liveSnapshots; }
    ~Snapshot() override { --owner_.liveSnapshots; }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

    std::optional<std::size_t> count() override {
      if (!owner_.hasList) return std::nullopt;
      return owner_.sources.size();
    }
    std::optional<PropertyDictionary> description(std::size_t index) override {
      owner_.described.push_back(index);
      return owner_.sources.at(index);
    }

   private:
    FakePowerSources& owner_;
  };

  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell
