#include "Tidewell/BatteryMonitor.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace tidewell {
namespace {

constexpr PowerState kNoBattery{true, 100, false, false};

class BatteryMonitorTest : public testing::Test {
 protected:
  FakePorts fakes;
};

TEST_F(BatteryMonitorTest, ReportsACAndFullChargeWithoutAPowerSource) {
  EXPECT_EQ(BatteryMonitor::current(), kNoBattery);
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
  fakes.powerSources.setBattery(45);
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{false, 45, true, true}));
  fakes.powerSources.setBatteryOnAC(30);
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{true, 30, true, true}));
  fakes.powerSources.current = PowerSource{false, std::nullopt};
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{false, 100, true, true}));
}

TEST_F(BatteryMonitorTest, ReadsLowPowerModeBeforeThePowerSource) {
  BatteryMonitor::current();
  EXPECT_EQ(fakes.calls->all(),
            (std::vector<std::string>{"read Low Power Mode", "read the power source"}));
}

TEST_F(BatteryMonitorTest, ReadsABatteryOf45Percent) {
  fakes.powerSources.setBattery(45);
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{false, 45, false, true}));
  EXPECT_EQ(BatteryMonitor::current().blockedReason({50, true, false}), "battery below 50%");
  EXPECT_EQ(BatteryMonitor::current().blockedReason({45, true, false}), std::nullopt);
}

TEST_F(BatteryMonitorTest, ReadsABatteryOnTheWallAdapter) {
  fakes.powerSources.setBatteryOnAC(30);
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{true, 30, false, true}));
}

TEST_F(BatteryMonitorTest, ReportsFullChargeForABatteryThatDoesNotTellItsCharge) {
  fakes.powerSources.current = PowerSource{false, std::nullopt};
  EXPECT_EQ(BatteryMonitor::current(), (PowerState{false, 100, false, true}));
}

TEST_F(BatteryMonitorTest, LogsNothing) {
  fakes.powerSources.setBattery(30);
  BatteryMonitor::current();
  EXPECT_TRUE(fakes.log.records().empty());
}

}  // namespace
}  // namespace tidewell
