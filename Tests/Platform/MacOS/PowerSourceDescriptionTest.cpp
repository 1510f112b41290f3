#include "Platform/MacOS/Power/PowerSourceDescription.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Tidewell/BatteryMonitor.h"
#include "Tidewell/Ports/Ports.h"

namespace platform {
namespace {

using tidewell::PowerSource;
using tidewell::PropertyDictionary;
using tidewell::PropertyValue;

PropertyDictionary battery(std::int64_t charge, const std::string& state) {
  return {{"Power Source State", state},
          {"Current Capacity", charge},
          {"Max Capacity", std::int64_t{100}}};
}

/// On battery, with these capacities.
std::optional<std::int64_t> percentage(const PropertyValue& current, const PropertyValue& max) {
  return powerSource({{"Power Source State", "Battery Power"},
                      {"Current Capacity", current},
                      {"Max Capacity", max}})
      .percentage;
}

TEST(PowerSourceDescription, ReadsABatteryOf45Percent) {
  EXPECT_EQ(powerSource(battery(45, "Battery Power")), (PowerSource{false, 45}));
}

TEST(PowerSourceDescription, IsOnACOnlyWithExactlyThatText) {
  EXPECT_TRUE(powerSource(battery(45, "AC Power")).isOnAC);
  EXPECT_FALSE(powerSource(battery(45, "ac power")).isOnAC);
  EXPECT_FALSE(powerSource(battery(45, "Off Line")).isOnAC);
}

TEST(PowerSourceDescription, IsOnBatteryWithoutAStateText) {
  EXPECT_EQ(
      powerSource({{"Current Capacity", std::int64_t{60}}, {"Max Capacity", std::int64_t{100}}}),
      (PowerSource{false, 60}));
  EXPECT_FALSE(powerSource({{"Power Source State", true}}).isOnAC);
}

TEST(PowerSourceDescription, DividesByTheMaximumAndTruncates) {
  EXPECT_EQ(percentage(std::int64_t{4500}, std::int64_t{5000}), 90);
  EXPECT_EQ(percentage(std::int64_t{999}, std::int64_t{1000}), 99);
  EXPECT_EQ(percentage(std::int64_t{-5}, std::int64_t{1000}), 0);
}

TEST(PowerSourceDescription, DividesBeforeItMultiplies) {
  // 29 / 100 × 100 is a hair below 29 in double precision.
  EXPECT_EQ(percentage(std::int64_t{29}, std::int64_t{100}), 28);
}

TEST(PowerSourceDescription, ReportsFullChargeWhenTheMaximumIsNotPositive) {
  EXPECT_EQ(percentage(std::int64_t{37}, std::int64_t{0}), 100);
  EXPECT_EQ(percentage(std::int64_t{37}, std::int64_t{-10}), 100);
}

TEST(PowerSourceDescription, DividesByAHundredWithoutAMaximum) {
  EXPECT_EQ(powerSource({{"Current Capacity", std::int64_t{37}}}).percentage, 37);
  EXPECT_EQ(percentage(std::int64_t{37}, 200.0), 37);
  EXPECT_EQ(percentage(std::int64_t{37}, "200"), 37);
}

TEST(PowerSourceDescription, TakesAMissingCurrentCapacityForAHundred) {
  EXPECT_EQ(powerSource({}).percentage, 100);
  EXPECT_EQ(powerSource({{"Max Capacity", std::int64_t{200}}}).percentage, 50);
  EXPECT_EQ(percentage("37", std::int64_t{200}), 50);
}

TEST(PowerSourceDescription, SurvivesAbsurdCapacities) {
  constexpr std::int64_t huge = 9223372036854775807;
  EXPECT_GT(percentage(huge, std::int64_t{1}).value(), 100);
  EXPECT_LT(percentage(-huge, std::int64_t{1}).value(), 0);
}

/// A machine of which the system may refuse each answer.
class FakeSnapshot : public PowerSourcesSnapshot {
 public:
  std::optional<std::size_t> count() override {
    if (!hasList) return std::nullopt;
    return sources.size();
  }
  std::optional<PropertyDictionary> description(std::size_t index) override {
    described.push_back(index);
    return sources.at(index);
  }

  bool hasList = true;
  std::vector<std::optional<PropertyDictionary>> sources;  ///< Absent: it cannot be described.
  std::vector<std::size_t> described;  ///< The index of every description asked for.
};

class FirstPowerSourceTest : public ::testing::Test {
 protected:
  std::optional<PowerSource> first() { return firstPowerSource(hasSnapshot ? &snapshot : nullptr); }

  bool hasSnapshot = true;
  FakeSnapshot snapshot;
  std::vector<std::optional<PropertyDictionary>>& sources = snapshot.sources;
  std::vector<std::size_t>& described = snapshot.described;
};

TEST_F(FirstPowerSourceTest, IsAbsentWithoutASnapshot) {
  sources = {battery(5, "Battery Power")};
  hasSnapshot = false;
  EXPECT_EQ(first(), std::nullopt);
  EXPECT_TRUE(described.empty());
}

TEST_F(FirstPowerSourceTest, IsAbsentWithoutAList) {
  sources = {battery(5, "Battery Power")};
  snapshot.hasList = false;
  EXPECT_EQ(first(), std::nullopt);
  EXPECT_TRUE(described.empty());
}

TEST_F(FirstPowerSourceTest, IsAbsentWithoutAnySource) {
  EXPECT_EQ(first(), std::nullopt);
  EXPECT_TRUE(described.empty());
}

TEST_F(FirstPowerSourceTest, IsAbsentWhenNoSourceDescribesItself) {
  sources = {std::nullopt, std::nullopt};
  EXPECT_EQ(first(), std::nullopt);
  EXPECT_EQ(described, (std::vector<std::size_t>{0, 1}));
}

TEST_F(FirstPowerSourceTest, IsTheSecondWhenTheFirstIsUnreadable) {
  sources = {std::nullopt, battery(30, "AC Power")};
  EXPECT_EQ(first(), (PowerSource{true, 30}));
}

TEST_F(FirstPowerSourceTest, LooksAtNoSourceBehindTheFirstReadableOne) {
  sources = {battery(30, "AC Power"), battery(50, "AC Power")};
  EXPECT_EQ(first(), (PowerSource{true, 30}));
  EXPECT_EQ(described, std::vector<std::size_t>{0});
}

/// A machine in Low Power Mode whose sources are described so.
class DescribedSources : public tidewell::PowerSources {
 public:
  bool isLowPowerModeEnabled() override { return true; }
  std::optional<PowerSource> source() override {
    return firstPowerSource(hasSnapshot ? &snapshot : nullptr);
  }

  bool hasSnapshot = true;
  FakeSnapshot snapshot;
};

TEST(DescribedPowerSources, HideNoLowPowerModeInAnyOutcome) {
  constexpr tidewell::PowerState noBattery{true, 100, true, false};
  const auto sources = std::make_shared<DescribedSources>();
  tidewell::Ports ports;
  ports.powerSources = sources;
  const tidewell::InstalledPorts installed(ports);

  EXPECT_EQ(tidewell::BatteryMonitor::current(), noBattery) << "no source";
  sources->snapshot.sources = {std::nullopt};
  EXPECT_EQ(tidewell::BatteryMonitor::current(), noBattery) << "no description";
  sources->snapshot.sources = {battery(45, "Battery Power")};
  EXPECT_EQ(tidewell::BatteryMonitor::current(), (tidewell::PowerState{false, 45, true, true}));
  sources->snapshot.hasList = false;
  EXPECT_EQ(tidewell::BatteryMonitor::current(), noBattery) << "no list";
  sources->hasSnapshot = false;
  EXPECT_EQ(tidewell::BatteryMonitor::current(), noBattery) << "no snapshot";
}

}  // namespace
}  // namespace platform
