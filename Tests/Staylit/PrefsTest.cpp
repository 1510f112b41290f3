#include "Staylit/Prefs.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace staylit {
namespace {

using tidewell::ActivityThresholds;
using tidewell::PowerPolicy;
using tidewell::PropertyDictionary;
using tidewell::TextSet;
using Integer = std::int64_t;
using Texts = std::vector<std::string>;

class PrefsTest : public testing::Test {
 protected:
  tidewell::FakePorts fakes;
};

TEST_F(PrefsTest, AFreshStoreHasTheDefaultThresholds) {
  const ActivityThresholds thresholds = Prefs::shared().activityThresholds();
  EXPECT_EQ(thresholds.cpuPercent, 15.0);
  EXPECT_EQ(thresholds.diskKBps, 500.0);
  EXPECT_EQ(thresholds.netKBps, 100.0);
  EXPECT_EQ(thresholds.sustainSeconds, 10);
  EXPECT_EQ(thresholds.ignored, TextSet{});
  EXPECT_TRUE(thresholds.honorAppAssertions);
}

TEST_F(PrefsTest, AFreshStoreHasTheDefaultPolicyAndGrace) {
  const PowerPolicy policy = Prefs::shared().powerPolicy();
  EXPECT_EQ(policy.batteryFloor, 20);
  EXPECT_TRUE(policy.respectLowPowerMode);
  EXPECT_FALSE(policy.keepScreenOn);
  EXPECT_EQ(Prefs::shared().defaults().integer("graceSeconds"), 120);
}

TEST_F(PrefsTest, RegistersThirteenDefaultsAndWritesNone) {
  Prefs::shared();
  const PropertyDictionary expected = {{"graceSeconds", Integer{120}},
                                       {"batteryThreshold", Integer{20}},
                                       {"respectLowPower", true},
                                       {"allowLidClosed", false},
                                       {"keepScreenOn", false},
                                       {"ignoredApps", Texts{}},
                                       {"cpuThresholdPercent", 15.0},
                                       {"diskThresholdKBps", 500.0},
                                       {"netThresholdKBps", 100.0},
                                       {"sustainSeconds", Integer{10}},
                                       {"honorAppAssertions", true},
                                       {"launchAtLogin", false},
                                       {"verbose", false}};
  EXPECT_EQ(fakes.defaults.registered, expected);
  EXPECT_TRUE(fakes.defaults.stored.empty());
  EXPECT_TRUE(fakes.defaults.written.empty());
}

TEST_F(PrefsTest, RegistersOnFirstUseAndOnce) {
  EXPECT_EQ(fakes.calls->count("register defaults"), 0U);
  Prefs& prefs = Prefs::shared();
  EXPECT_EQ(prefs.activityThresholds().cpuPercent, 15.0);
  EXPECT_EQ(&Prefs::shared(), &prefs);
  EXPECT_EQ(fakes.calls->count("register defaults"), 1U);
}

TEST_F(PrefsTest, ReadsTheStoreOfTheInstalledPorts) {
  fakes.defaults.stored["batteryThreshold"] = Integer{33};
  EXPECT_EQ(Prefs::shared().powerPolicy().batteryFloor, 33);
  {
    const tidewell::FakePorts inner;
    EXPECT_EQ(Prefs::shared().powerPolicy().batteryFloor, 20);
  }
  EXPECT_EQ(Prefs::shared().powerPolicy().batteryFloor, 33);
}

TEST_F(PrefsTest, BuildsTheThresholdsFromWhatIsStored) {
  fakes.defaults.stored = {{"cpuThresholdPercent", 42.5},
                           {"diskThresholdKBps", 1.5},
                           {"netThresholdKBps", 2.5},
                           {"sustainSeconds", Integer{7}},
                           {"ignoredApps", Texts{"b", "a", "b"}},
                           {"honorAppAssertions", false}};
  const ActivityThresholds thresholds = Prefs::shared().activityThresholds();
  EXPECT_EQ(thresholds.cpuPercent, 42.5);
  EXPECT_EQ(thresholds.diskKBps, 1.5);
  EXPECT_EQ(thresholds.netKBps, 2.5);
  EXPECT_EQ(thresholds.sustainSeconds, 7);
  EXPECT_EQ(thresholds.ignored, (TextSet{"a", "b"}));
  EXPECT_FALSE(thresholds.honorAppAssertions);
}

TEST_F(PrefsTest, BuildsThePolicyFromWhatIsStored) {
  fakes.defaults.stored = {
      {"batteryThreshold", Integer{55}}, {"respectLowPower", false}, {"keepScreenOn", true}};
  const PowerPolicy policy = Prefs::shared().powerPolicy();
  EXPECT_EQ(policy.batteryFloor, 55);
  EXPECT_FALSE(policy.respectLowPowerMode);
  EXPECT_TRUE(policy.keepScreenOn);
}

TEST_F(PrefsTest, ReadsTheStoreAfreshEveryTime) {
  Prefs& prefs = Prefs::shared();
  EXPECT_EQ(prefs.activityThresholds().cpuPercent, 15.0);
  fakes.defaults.stored["cpuThresholdPercent"] = 16.0;
  EXPECT_EQ(prefs.activityThresholds().cpuPercent, 16.0);
  fakes.defaults.stored.clear();
  EXPECT_EQ(prefs.activityThresholds().cpuPercent, 15.0);
}

TEST_F(PrefsTest, RaisesASustainTimeOfZeroOrMinusFiveToOne) {
  fakes.defaults.stored["sustainSeconds"] = Integer{0};
  EXPECT_EQ(Prefs::shared().activityThresholds().sustainSeconds, 1);
  fakes.defaults.stored["sustainSeconds"] = Integer{-5};
  EXPECT_EQ(Prefs::shared().activityThresholds().sustainSeconds, 1);
  fakes.defaults.stored["sustainSeconds"] = Integer{1};
  EXPECT_EQ(Prefs::shared().activityThresholds().sustainSeconds, 1);
}

TEST_F(PrefsTest, PassesThresholdsOfZeroAndBelowThrough) {
  fakes.defaults.stored = {{"cpuThresholdPercent", 0.0},
                           {"diskThresholdKBps", -1.0},
                           {"netThresholdKBps", -2.5},
                           {"batteryThreshold", Integer{-3}}};
  const ActivityThresholds thresholds = Prefs::shared().activityThresholds();
  EXPECT_EQ(thresholds.cpuPercent, 0.0);
  EXPECT_EQ(thresholds.diskKBps, -1.0);
  EXPECT_EQ(thresholds.netKBps, -2.5);
  EXPECT_EQ(Prefs::shared().powerPolicy().batteryFloor, -3);
}

TEST_F(PrefsTest, PassesABatteryFloorAboveAHundredThrough) {
  fakes.defaults.stored["batteryThreshold"] = Integer{250};
  EXPECT_EQ(Prefs::shared().powerPolicy().batteryFloor, 250);
}

TEST_F(PrefsTest, ReadsAValueThatCannotBeConvertedAsNothing) {
  fakes.defaults.stored = {{"cpuThresholdPercent", "many"},
                           {"respectLowPower", Texts{"true"}},
                           {"batteryThreshold", Texts{}}};
  EXPECT_EQ(Prefs::shared().activityThresholds().cpuPercent, 0.0);
  EXPECT_FALSE(Prefs::shared().powerPolicy().respectLowPowerMode);
  EXPECT_EQ(Prefs::shared().powerPolicy().batteryFloor, 0);
}

TEST_F(PrefsTest, IgnoresNobodyWhenTheStoredValueIsNotAList) {
  fakes.defaults.stored["ignoredApps"] = "com.a";
  EXPECT_EQ(Prefs::shared().ignoredApps(), TextSet{});
  EXPECT_EQ(Prefs::shared().activityThresholds().ignored, TextSet{});
}

TEST_F(PrefsTest, StoresTheIgnoredAppsSortedByCodePoint) {
  Prefs::shared().setIgnoredApps({"b", "B", "a"});
  EXPECT_EQ(fakes.defaults.stored.at("ignoredApps"), tidewell::PropertyValue(Texts{"B", "a", "b"}));
  Prefs::shared().setIgnoredApps({"\u00E9", "z", "\U0001F600", "\uFF21"});
  EXPECT_EQ(fakes.defaults.stored.at("ignoredApps"),
            tidewell::PropertyValue(Texts{"z", "\u00E9", "\uFF21", "\U0001F600"}));
  EXPECT_EQ(fakes.defaults.written, (Texts{"ignoredApps", "ignoredApps"}));
}

TEST_F(PrefsTest, ReadsBackTheIgnoredAppsThatItStored) {
  Prefs::shared().setIgnoredApps({"com.b", "tool"});
  EXPECT_EQ(Prefs::shared().ignoredApps(), (TextSet{"com.b", "tool"}));
  Prefs::shared().setIgnoredApps({});
  EXPECT_EQ(Prefs::shared().ignoredApps(), TextSet{});
  EXPECT_EQ(fakes.defaults.stored.at("ignoredApps"), tidewell::PropertyValue(Texts{}));
}

}  // namespace
}  // namespace staylit
