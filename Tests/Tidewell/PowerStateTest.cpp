#include "Tidewell/BatteryMonitor.h"

#include <gtest/gtest.h>

#include <optional>

namespace tidewell {
namespace {

constexpr PowerState onBattery(std::int64_t percentage) {
  return {false, percentage, false, true};
}

constexpr PowerPolicy kFloor20{20, true, false};

TEST(PowerPolicy, TakesItsThreeFieldsInOrder) {
  PowerPolicy policy{20, true, false};
  EXPECT_EQ(policy.batteryFloor, 20);
  EXPECT_TRUE(policy.respectLowPowerMode);
  EXPECT_FALSE(policy.keepScreenOn);
  policy.batteryFloor = 35;
  EXPECT_EQ(policy.batteryFloor, 35);
}

TEST(PowerState, IsBlockedOnBatteryBelowTheFloorAndNamesTheFloor) {
  EXPECT_EQ(onBattery(45).blockedReason({50, true, false}), "battery below 50%");
  EXPECT_EQ(onBattery(19).blockedReason(kFloor20), "battery below 20%");
}

TEST(PowerState, IsNotBlockedExactlyAtTheFloor) {
  EXPECT_EQ(onBattery(45).blockedReason({45, true, false}), std::nullopt);
  EXPECT_EQ(onBattery(44).blockedReason({45, true, false}), "battery below 45%");
}

TEST(PowerState, IsNotBlockedOnACHoweverLowTheBattery) {
  const PowerState state{true, 1, false, true};
  EXPECT_EQ(state.blockedReason(kFloor20), std::nullopt);
}

TEST(PowerState, IsNotBlockedByChargeWithoutABattery) {
  const PowerState state{false, 1, false, false};
  EXPECT_EQ(state.blockedReason(kFloor20), std::nullopt);
}

TEST(PowerState, IsBlockedByLowPowerModeEvenOnACAtFullCharge) {
  const PowerState state{true, 100, true, true};
  EXPECT_EQ(state.blockedReason(kFloor20), "Low Power Mode is on");
}

TEST(PowerState, IsBlockedByLowPowerModeWithoutABattery) {
  const PowerState state{true, 100, true, false};
  EXPECT_EQ(state.blockedReason(kFloor20), "Low Power Mode is on");
}

TEST(PowerState, NamesLowPowerModeBeforeTheBattery) {
  const PowerState state{false, 5, true, true};
  EXPECT_EQ(state.blockedReason(kFloor20), "Low Power Mode is on");
}

TEST(PowerState, NamesTheBatteryWhenLowPowerModeIsNotRespected) {
  const PowerState state{false, 5, true, true};
  EXPECT_EQ(state.blockedReason({20, false, false}), "battery below 20%");
}

TEST(PowerState, IsNotBlockedByALowPowerModeThatIsNotRespected) {
  const PowerState state{true, 100, true, true};
  EXPECT_EQ(state.blockedReason({20, false, false}), std::nullopt);
}

TEST(PowerState, PrintsTheFloorAsItIsStored) {
  EXPECT_EQ(onBattery(100).blockedReason({250, true, false}), "battery below 250%");
  EXPECT_EQ(onBattery(-9).blockedReason({-5, true, false}), "battery below -5%");
}

TEST(PowerState, FindsTheBatteryTooLowOnlyBelowTheFloorOnBattery) {
  EXPECT_TRUE(onBattery(19).batteryTooLow(20));
  EXPECT_FALSE(onBattery(20).batteryTooLow(20));
  EXPECT_FALSE((PowerState{true, 19, false, true}).batteryTooLow(20));
  EXPECT_FALSE((PowerState{false, 19, false, false}).batteryTooLow(20));
}

TEST(PowerState, FindsTheBatteryTooLowWhateverLowPowerModeSays) {
  EXPECT_TRUE((PowerState{false, 19, true, true}).batteryTooLow(20));
  EXPECT_FALSE((PowerState{false, 50, true, true}).batteryTooLow(20));
}

}  // namespace
}  // namespace tidewell
