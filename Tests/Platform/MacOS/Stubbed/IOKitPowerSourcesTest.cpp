#include "Platform/MacOS/Power/IOKitPowerSources.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "Tests/Platform/MacOS/Stubs/PowerService.h"
#include "Tests/Platform/MacOS/Stubs/Workspace.h"
#include "Tests/Platform/Power/PowerSourcesContract.h"

namespace platform {
namespace {

using Source = std::optional<tidewell::PowerSource>;

stub::Value battery(const tidewell::PowerSource& source) {
  return stub::Dictionary{{u"Name", u"InternalBattery-0"},
                          {u"Power Source State", source.isOnAC ? u"AC Power" : u"Battery Power"},
                          {u"Current Capacity", source.percentage.value()},
                          {u"Max Capacity", 100},
                          {u"Is Charging", source.isOnAC}};
}

class StubbedPowerSources {
 public:
  static const char* missing() { return nullptr; }
  IOKitPowerSources& sources() { return sources_; }
  static void feed(const Source& source) {
    stub::PowerService::shared().sources.clear();
    if (source) stub::PowerService::shared().sources = {battery(*source)};
  }
  static bool settles(const std::function<bool()>& condition) { return condition(); }

 private:
  IOKitPowerSources sources_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(OfIOKit, PowerSourcesContract, StubbedPowerSources);

class IOKitPowerSourcesTest : public ::testing::Test {
 protected:
  stub::PowerService& service = stub::PowerService::shared();
  IOKitPowerSources sources;
};

TEST_F(IOKitPowerSourcesTest, AreAbsentWhereTheSystemRefusesAnAnswer) {
  service.sources = {battery({false, 45})};
  service.listsSources = false;
  EXPECT_EQ(sources.source(), std::nullopt);
  service.knowsOfSources = false;
  EXPECT_EQ(sources.source(), std::nullopt);
}

TEST_F(IOKitPowerSourcesTest, AreTheFirstThatCanBeDescribed) {
  service.sources = {std::nullopt, stub::Value(stub::Opaque()), battery({true, 30}),
                     battery({false, 50})};
  EXPECT_EQ(sources.source(), (tidewell::PowerSource{true, 30}));
  EXPECT_EQ(service.descriptions, 3) << "the fourth is not looked at";
}

TEST_F(IOKitPowerSourcesTest, AreOnBatteryAndFullWithoutAnyKey) {
  service.sources = {stub::Dictionary{}};
  EXPECT_EQ(sources.source(), (tidewell::PowerSource{false, 100}));
}

TEST_F(IOKitPowerSourcesTest, PassOnLowPowerMode) {
  EXPECT_FALSE(sources.isLowPowerModeEnabled());
  stub::Workspace::shared().isLowPowerModeEnabled = true;
  EXPECT_TRUE(sources.isLowPowerModeEnabled());
}

}  // namespace
}  // namespace platform
