#include "Tidewell/BatteryMonitor.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace tidewell {
namespace {

constexpr PowerState kNoBattery{true, 100, false, false};

class BatteryMonitorTest : public testing::Test {
 protected:
  PowerState currentWith(const PropertyDictionary& description) {
    fakes.powerSources.sources = {description};
    return BatteryMonitor::current();
  }

  /// On battery, with these capacities.
  std::int64_t percentage(const PropertyValue& current, const PropertyValue& max) {
    return currentWith({{"Power Source State", "Battery Power"},
                        {"Current Capacity", current},
                        {"Max Capacity", max}})
        .percentage;
  }

  FakePorts fakes;
};

TEST_F(BatteryMonitorTest, ReportsACAndFullChargeWithoutAnyPowerSource) {
  EXPECT_EQ(BatteryMonitor::current(), kNoBattery);
}

TEST_F(BatteryMonitorTest, ReportsACAndFullChargeWithoutASnapshot) {
  fakes.powerSources.setBattery(5, "Battery Power");
  fakes.powerSources.hasSnapshot = false;
  EXPECT_EQ(BatteryMonitor::current(), kNoBattery);
}

TEST_F(BatteryMonitorTest, ReportsACAndFullChargeWithoutAList) {
  fakes.powerSources.setBattery(5, "Battery Power");
  fakes.powerSources.hasList = false;
  EXPECT_EQ(BatteryMonitor::current(), kNoBattery);
  EXPECT_TRUE(fakes.powerSources.described.empty());
}

TEST_F(BatteryMonitorTest, ReportsACAndFullChargeWhenNoSourceDescribesItself) {
  fakes.powerSources.sources = {std::nullopt, std::nullopt};
  EXPECT_EQ(BatteryMonitor::current(), kNoBattery);
  EXPECT_EQ(fakes.powerSources.described, (std::vector<std::size_t>{0, 1}));
}

TEST_F(BatteryMonitorTest, BlocksAMachineWithoutABatteryOnlyInLowPowerMode) {
  EXPECT_EQ(BatteryMonitor::current().blockedReason({20, true, false}), std::nullopt);
  fakes.powerSources.lowPowerMode = true;
  EXPECT_EQ(BatteryMonitor::current().blockedReason({20, true, false}), "Low Power Mode is on");
  EXPECT_EQ(BatteryMonitor::current().blockedReason({20, false, false}), std::nullopt);
}

TEST_F(BatteryMonitorTest, ReportsLowPowerModeInEveryOutcome) {
  fakes.powerSources.lowPowerMode = true;
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{true, 100, true, false}));
  fakes.powerSources.setBattery(45, "Battery Power");
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{false, 45, true, true}));
  fakes.powerSources.hasSnapshot = false;
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{true, 100, true, false}));
}

TEST_F(BatteryMonitorTest, ReadsLowPowerModeBeforeThePowerSources) {
  BatteryMonitor::current();
  EXPECT_EQ(fakes.calls->all(),
            (std::vector<std::string>{"read Low Power Mode", "copy power sources"}));
}

TEST_F(BatteryMonitorTest, ReadsABatteryOf45Percent) {
  fakes.powerSources.setBattery(45, "Battery Power");
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{false, 45, false, true}));
  EXPECT_EQ(BatteryMonitor::current().blockedReason({50, true, false}), "battery below 50%");
  EXPECT_EQ(BatteryMonitor::current().blockedReason({45, true, false}), std::nullopt);
}

TEST_F(BatteryMonitorTest, IsOnACOnlyWithExactlyThatText) {
  fakes.powerSources.setBattery(45, "AC Power");
  EXPECT_TRUE(BatteryMonitor::current().onAC);
  fakes.powerSources.setBattery(45, "ac power");
  EXPECT_FALSE(BatteryMonitor::current().onAC);
  fakes.powerSources.setBattery(45, "Off Line");
  EXPECT_FALSE(BatteryMonitor::current().onAC);
}

TEST_F(BatteryMonitorTest, IsOnBatteryWithoutAStateText) {
  const PowerState missing =
      currentWith({{"Current Capacity", std::int64_t{60}}, {"Max Capacity", std::int64_t{100}}});
  EXPECT_EQ(missing, (PowerState{false, 60, false, true}));
  EXPECT_FALSE(currentWith({{"Power Source State", true}}).onAC);
}

TEST_F(BatteryMonitorTest, DividesByTheMaximumAndTruncates) {
  EXPECT_EQ(percentage(std::int64_t{4500}, std::int64_t{5000}), 90);
  EXPECT_EQ(percentage(std::int64_t{999}, std::int64_t{1000}), 99);
  EXPECT_EQ(percentage(std::int64_t{-5}, std::int64_t{1000}), 0);
}

TEST_F(BatteryMonitorTest, DividesBeforeItMultiplies) {
  // 29 / 100 × 100 is a hair below 29 in double precision.
  EXPECT_EQ(percentage(std::int64_t{29}, std::int64_t{100}), 28);
}

TEST_F(BatteryMonitorTest, ReportsFullChargeWhenTheMaximumIsNotPositive) {
  EXPECT_EQ(percentage(std::int64_t{37}, std::int64_t{0}), 100);
  EXPECT_EQ(percentage(std::int64_t{37}, std::int64_t{-10}), 100);
}

TEST_F(BatteryMonitorTest, DividesByAHundredWithoutAMaximum) {
  EXPECT_EQ(currentWith({{"Current Capacity", std::int64_t{37}}}).percentage, 37);
  EXPECT_EQ(percentage(std::int64_t{37}, 200.0), 37);
  EXPECT_EQ(percentage(std::int64_t{37}, "200"), 37);
}

TEST_F(BatteryMonitorTest, TakesAMissingCurrentCapacityForAHundred) {
  EXPECT_EQ(currentWith({}).percentage, 100);
  EXPECT_EQ(currentWith({{"Max Capacity", std::int64_t{200}}}).percentage, 50);
  EXPECT_EQ(percentage("37", std::int64_t{200}), 50);
}

TEST_F(BatteryMonitorTest, SurvivesAbsurdCapacities) {
  constexpr std::int64_t huge = 9223372036854775807;
  EXPECT_GT(percentage(huge, std::int64_t{1}), 100);
  EXPECT_LT(percentage(-huge, std::int64_t{1}), 0);
}

TEST_F(BatteryMonitorTest, UsesTheSecondSourceWhenTheFirstIsUnreadable) {
  fakes.powerSources.setBattery(30, "AC Power");
  fakes.powerSources.sources = {std::nullopt, fakes.powerSources.sources.front()};
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{true, 30, false, true}));
}

TEST_F(BatteryMonitorTest, LooksAtNoSourceBehindTheFirstReadableOne) {
  fakes.powerSources.setBattery(30, "AC Power");
  fakes.powerSources.sources.push_back(fakes.powerSources.sources.front());
  BatteryMonitor::current();
  EXPECT_EQ(fakes.powerSources.described, std::vector<std::size_t>{0});
}

TEST_F(BatteryMonitorTest, GivesTheSnapshotBackAndLogsNothing) {
  fakes.powerSources.setBattery(30, "AC Power");
  BatteryMonitor::current();
  EXPECT_EQ(fakes.powerSources.liveSnapshots, 0);
  EXPECT_TRUE(fakes.log.records().empty());
}

}  // namespace
}  // namespace tidewell
