#include "Platform/Linux/Power/PowerSupplyFiles.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using Files = std::map<std::string, std::string>;

class PowerSupplyFilesTest : public ::testing::Test {
 protected:
  void supply(const std::string& name, const Files& files) {
    for (const auto& [file, text] : files)
      folder.write(name + "/" + file, text + "\n");
  }
  PowerSituation read() { return readPowerSupplies(folder.path()).value(); }

  testing::TemporaryFolder folder;
};

TEST_F(PowerSupplyFilesTest, AreAbsentWithoutTheFolder) {
  EXPECT_EQ(readPowerSupplies(folder.path() / "missing"), std::nullopt);
}

TEST_F(PowerSupplyFilesTest, TellOfNoBatteryOnADesktop) {
  EXPECT_FALSE(read().hasBattery);
  EXPECT_FALSE(read().onBattery);
  supply("AC", {{"type", "Mains"}, {"online", "1"}});
  EXPECT_FALSE(read().hasBattery);
}

TEST_F(PowerSupplyFilesTest, TellOfALaptopOnItsAdapter) {
  supply("AC", {{"type", "Mains"}, {"online", "1"}});
  supply("BAT0", {{"type", "Battery"},
                  {"present", "1"},
                  {"status", "Charging"},
                  {"energy_now", "28500000"},
                  {"energy_full", "50000000"},
                  {"capacity", "56"}});
  EXPECT_TRUE(read().hasBattery);
  EXPECT_FALSE(read().onBattery);
  EXPECT_EQ(read().percentage, 57.0);
}

TEST_F(PowerSupplyFilesTest, TellOfALaptopWithoutItsAdapter) {
  supply("AC", {{"type", "Mains"}, {"online", "0"}});
  supply("BAT0", {{"type", "Battery"}, {"status", "Unknown"}, {"capacity", "45"}});
  EXPECT_TRUE(read().hasBattery);
  EXPECT_TRUE(read().onBattery);
  EXPECT_EQ(read().percentage, 45.0);
}

TEST_F(PowerSupplyFilesTest, CountAnyAdapterAsMains) {
  supply("AC", {{"type", "Mains"}, {"online", "0"}});
  supply("ucsi-source-psy-1", {{"type", "USB"}, {"online", "1"}});
  supply("BAT0", {{"type", "Battery"}, {"status", "Discharging"}, {"capacity", "45"}});
  EXPECT_FALSE(read().onBattery);
}

TEST_F(PowerSupplyFilesTest, UseTheBatteryWhenNoAdapterTells) {
  supply("BAT0", {{"type", "Battery"}, {"status", "Discharging"}, {"capacity", "45"}});
  EXPECT_TRUE(read().onBattery);
  supply("BAT0", {{"status", "Full"}});
  EXPECT_FALSE(read().onBattery);
}

TEST_F(PowerSupplyFilesTest, DoNotCountAnIdleUsbPortAsALostAdapter) {
  supply("usb", {{"type", "USB"}, {"online", "0"}});
  supply("BAT0", {{"type", "Battery"}, {"status", "Charging"}, {"capacity", "45"}});
  EXPECT_FALSE(read().onBattery);
}

TEST_F(PowerSupplyFilesTest, SkipTheBatteriesOfPeripherals) {
  supply("hid-mouse",
         {{"type", "Battery"}, {"scope", "Device"}, {"status", "Discharging"}, {"capacity", "5"}});
  EXPECT_FALSE(read().hasBattery);
  EXPECT_FALSE(read().onBattery);
}

TEST_F(PowerSupplyFilesTest, SkipAnEmptyBatterySlot) {
  supply("BAT0", {{"type", "Battery"}, {"present", "0"}, {"capacity", "0"}});
  EXPECT_FALSE(read().hasBattery);
}

TEST_F(PowerSupplyFilesTest, AddUpBatteriesByTheirEnergy) {
  supply("BAT0", {{"type", "Battery"}, {"energy_now", "10"}, {"energy_full", "10"}});
  supply("BAT1", {{"type", "Battery"}, {"energy_now", "20"}, {"energy_full", "90"}});
  EXPECT_EQ(read().percentage, 30.0);
}

TEST_F(PowerSupplyFilesTest, AddUpBatteriesByTheirCharge) {
  supply("BAT0", {{"type", "Battery"}, {"charge_now", "50"}, {"charge_full", "100"}});
  supply("BAT1", {{"type", "Battery"}, {"charge_now", "10"}, {"charge_full", "300"}});
  EXPECT_EQ(read().percentage, 15.0);
}

TEST_F(PowerSupplyFilesTest, TakeTheMeanOfBatteriesThatCannotBeAddedUp) {
  supply("BAT0", {{"type", "Battery"}, {"energy_now", "50"}, {"energy_full", "100"}});
  supply("BAT1", {{"type", "Battery"}, {"charge_now", "10"}, {"charge_full", "100"}});
  EXPECT_EQ(read().percentage, 30.0);
}

TEST_F(PowerSupplyFilesTest, SkipFilesThatMakeNoSense) {
  supply("BAT0", {{"type", "Battery"},
                  {"present", "perhaps"},
                  {"energy_now", "12abc"},
                  {"energy_full", "50000000"},
                  {"charge_now", "5"},
                  {"charge_full", "0"},
                  {"capacity", "77"}});
  EXPECT_TRUE(read().hasBattery);
  EXPECT_EQ(read().percentage, 77.0);
  supply("BAT0", {{"capacity", "-1"}});
  EXPECT_TRUE(read().hasBattery);
  EXPECT_EQ(read().percentage, std::nullopt);
}

TEST_F(PowerSupplyFilesTest, LeaveABatteryThatTellsNothingOutOfTheSum) {
  supply("BAT0", {{"type", "Battery"}});
  supply("BAT1", {{"type", "Battery"}, {"energy_now", "20"}, {"energy_full", "80"}});
  EXPECT_EQ(read().percentage, 25.0);
}

TEST_F(PowerSupplyFilesTest, NeverTellOfMoreThanAFullBattery) {
  supply("BAT0", {{"type", "Battery"}, {"energy_now", "110"}, {"energy_full", "100"}});
  EXPECT_EQ(read().percentage, 100.0);
}

TEST_F(PowerSupplyFilesTest, SkipEverythingThatIsNoSupply) {
  folder.write("stray", "text");
  supply("odd", {{"model", "x"}});
  EXPECT_FALSE(read().hasBattery);
}

}  // namespace
}  // namespace platform
