#include "Platform/Linux/Power/UPowerSources.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakePropertyService.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names

constexpr const char* kUPower = "org.freedesktop.UPower";
constexpr const char* kUPowerPath = "/org/freedesktop/UPower";
constexpr const char* kDevicePath = "/org/freedesktop/UPower/devices/DisplayDevice";
constexpr const char* kDevice = "org.freedesktop.UPower.Device";
constexpr std::uint32_t kBattery = 2;

class UPowerSourcesTest : public BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (!IsSkipped()) sources = std::make_unique<UPowerSources>(*systemBus, supplies.path());
  }
  void TearDown() override { sources.reset(); }

  std::unique_ptr<FakePropertyService> upower(bool onBattery, double percentage) {
    auto service = std::make_unique<FakePropertyService>(systemDaemon->address(), kUPower);
    service->set(kUPowerPath, kUPower, {{"OnBattery", onBattery}});
    service->set(kDevicePath, kDevice,
                 {{"Type", kBattery}, {"IsPresent", true}, {"Percentage", percentage}});
    return service;
  }

  std::unique_ptr<FakePropertyService> profiles(const std::string& name, const std::string& path,
                                                const std::string& active) {
    auto service = std::make_unique<FakePropertyService>(systemDaemon->address(), name);
    service->set(path, name, {{"ActiveProfile", active}});
    return service;
  }

  /// The source as "state percent", without what is unknown.
  std::string source() {
    const auto source = sources->source();
    if (!source) return "none";
    const std::string state = source->isOnAC ? "AC Power" : "Battery Power";
    return source->percentage ? state + " " + std::to_string(*source->percentage) : state;
  }

  TemporaryFolder supplies;
  std::unique_ptr<UPowerSources> sources;
};

TEST_F(UPowerSourcesTest, TellOfABatteryThatRunsDown) {
  const auto service = upower(true, 45.0);
  EXPECT_EQ(source(), "Battery Power 45");
}

TEST_F(UPowerSourcesTest, TellOfABatteryOnTheWallAdapter) {
  const auto service = upower(false, 99.9);
  EXPECT_EQ(source(), "AC Power 99");
}

TEST_F(UPowerSourcesTest, TellOfTheLidWhereThereIsOne) {
  const auto service = upower(false, 80.0);
  EXPECT_EQ(sources->isLidClosed(), std::nullopt);
  service->change(kUPowerPath, kUPower, "LidIsPresent", true);
  service->change(kUPowerPath, kUPower, "LidIsClosed", false);
  EXPECT_TRUE(eventually([&] { return sources->isLidClosed() == false; }));
  service->change(kUPowerPath, kUPower, "LidIsClosed", true);
  EXPECT_TRUE(eventually([&] { return sources->isLidClosed() == true; }));
}

TEST_F(UPowerSourcesTest, TellOfNoLidWithoutUPower) {
  EXPECT_EQ(sources->isLidClosed(), std::nullopt);
}

TEST_F(UPowerSourcesTest, KeepEveryWholePercentWhole) {
  const auto service = upower(false, 0.0);
  for (int percent = 0; percent <= 100; ++percent) {
    service->change(kDevicePath, kDevice, "Percentage", static_cast<double>(percent));
    ASSERT_TRUE(eventually([&] { return source() == "AC Power " + std::to_string(percent); }));
  }
}

TEST_F(UPowerSourcesTest, FollowChangesWithoutAskingAgain) {
  const auto service = upower(false, 80.0);
  EXPECT_EQ(source(), "AC Power 80");
  service->change(kUPowerPath, kUPower, "OnBattery", true);
  EXPECT_TRUE(eventually([&] { return source() == "Battery Power 80"; }));
  service->change(kDevicePath, kDevice, "Percentage", 79.0);
  EXPECT_TRUE(eventually([&] { return source() == "Battery Power 79"; }));
  EXPECT_EQ(service->readings, 2);
}

TEST_F(UPowerSourcesTest, TellOfNoSourceOnADesktop) {
  const auto service = upower(false, 0.0);
  service->set(kDevicePath, kDevice, {{"Type", 0U}, {"IsPresent", false}, {"Percentage", 0.0}});
  EXPECT_EQ(source(), "none");
}

TEST_F(UPowerSourcesTest, BelieveUPowerRatherThanTheKernel) {
  const auto service = upower(true, 45.0);
  supplies.write("BAT0/type", "Battery\n");
  supplies.write("BAT0/capacity", "12\n");
  EXPECT_EQ(source(), "Battery Power 45");
}

TEST_F(UPowerSourcesTest, AskTheKernelWhenUPowerIsAbsent) {
  EXPECT_EQ(source(), "none");
  supplies.write("BAT0/type", "Battery\n");
  supplies.write("BAT0/status", "Discharging\n");
  supplies.write("BAT0/capacity", "29\n");
  EXPECT_EQ(source(), "Battery Power 29");
}

TEST_F(UPowerSourcesTest, TellNoUnknownCapacity) {
  supplies.write("BAT0/type", "Battery\n");
  EXPECT_EQ(source(), "AC Power");
}

TEST_F(UPowerSourcesTest, AreAbsentWhenNeitherUPowerNorTheKernelTells) {
  UPowerSources nowhere(*systemBus, supplies.path() / "missing");
  EXPECT_EQ(nowhere.source(), std::nullopt);
}

TEST_F(UPowerSourcesTest, ChangeToUPowerWhenItAppearsAndBackWhenItGoes) {
  EXPECT_EQ(source(), "none");
  auto service = upower(true, 45.0);
  EXPECT_TRUE(eventually([&] { return source() == "Battery Power 45"; }));
  service.reset();
  EXPECT_TRUE(eventually([&] { return source() == "none"; }));
}

TEST_F(UPowerSourcesTest, StartUPowerAtMostOnceAndNeverTheProfilesService) {
  const std::string starts = supplies.path() / "starts";
  systemDaemon->stop();
  systemDaemon->offer(kUPower, "/bin/sh -c 'echo upower >> " + starts + "'");
  systemDaemon->offer("net.hadess.PowerProfiles", "/bin/sh -c 'echo profiles >> " + starts + "'");
  systemDaemon->start();
  for (int tick = 0; tick < 3; ++tick) {
    EXPECT_FALSE(sources->isLowPowerModeEnabled());
    EXPECT_EQ(source(), "none");
    runBriefly(*loop);
  }
  std::ifstream file(starts);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_EQ(text, "upower\n");
}

TEST_F(UPowerSourcesTest, SeeLowPowerModeInTheProfilesService) {
  const char* const name = "org.freedesktop.UPower.PowerProfiles";
  const char* const path = "/org/freedesktop/UPower/PowerProfiles";
  const auto service = profiles(name, path, "power-saver");
  EXPECT_TRUE(sources->isLowPowerModeEnabled());
  service->change(path, name, "ActiveProfile", std::string("balanced"));
  EXPECT_TRUE(eventually([&] { return !sources->isLowPowerModeEnabled(); }));
  service->change(path, name, "ActiveProfile", std::string("power-saver"));
  EXPECT_TRUE(eventually([&] { return sources->isLowPowerModeEnabled(); }));
  EXPECT_EQ(service->readings, 1);
}

TEST_F(UPowerSourcesTest, SeeLowPowerModeUnderTheServicesOlderName) {
  const auto service =
      profiles("net.hadess.PowerProfiles", "/net/hadess/PowerProfiles", "power-saver");
  EXPECT_TRUE(sources->isLowPowerModeEnabled());
}

TEST_F(UPowerSourcesTest, PreferTheNewerNameOfTheProfilesService) {
  const auto newer = profiles("org.freedesktop.UPower.PowerProfiles",
                              "/org/freedesktop/UPower/PowerProfiles", "balanced");
  const auto older =
      profiles("net.hadess.PowerProfiles", "/net/hadess/PowerProfiles", "power-saver");
  EXPECT_FALSE(sources->isLowPowerModeEnabled());
}

TEST_F(UPowerSourcesTest, SeeNoLowPowerModeWithoutAProfilesService) {
  EXPECT_FALSE(sources->isLowPowerModeEnabled());
}

TEST_F(UPowerSourcesTest, WorkWithoutABus) {
  systemDaemon->stop();
  supplies.write("BAT0/type", "Battery\n");
  supplies.write("BAT0/capacity", "60\n");
  EXPECT_EQ(source(), "AC Power 60");
  EXPECT_FALSE(sources->isLowPowerModeEnabled());
}

/// The power sources with mock services that another project wrote.
class MockedPowerTest : public UPowerSourcesTest {
 protected:
  void SetUp() override {
    UPowerSourcesTest::SetUp();
    if (IsSkipped()) return;
    const ChildProgram probe({"/usr/bin/python3", "-c", "import dbusmock"}, silence);
    int status = 1;
    ::waitpid(probe.pid(), &status, 0);
    if (status != 0) GTEST_SKIP() << "python3-dbusmock is not installed";
  }

  void call(const char* service, const char* path, const char* member,
            const Bus::Arguments& arguments) {
    Bus bus(*loop, Bus::Kind::system, impatient());
    EXPECT_TRUE(bus.call({service, path, "org.freedesktop.DBus.Mock", member}, arguments));
  }
};

TEST_F(MockedPowerTest, FollowsAMockOfUPower) {
  const ChildProgram mock({"/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "upower",
                           "--parameters", "{\"OnBattery\": true}"},
                          silence);
  ASSERT_TRUE(eventually([&] { return systemBus->nameStatus(kUPower).isOwned(); }));
  EXPECT_TRUE(eventually([&] { return source() == "none"; }));
  call(kUPower, kUPowerPath, "SetupDisplayDevice", [](sd_bus_message* message) {
    return sd_bus_message_append(message, "uuddddxxbsu", 2U, 2U, 45.0, 20.0, 50.0, 5.0,
                                 std::int64_t{3600}, std::int64_t{0}, 1, "battery", 1U);
  });
  EXPECT_TRUE(eventually([&] { return source() == "Battery Power 45"; }));
}

TEST_F(MockedPowerTest, FollowsAMockOfThePowerProfilesService) {
  const char* const name = "net.hadess.PowerProfiles";
  const char* const path = "/net/hadess/PowerProfiles";
  const ChildProgram mock(
      {"/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "power_profiles_daemon"},
      silence);
  ASSERT_TRUE(eventually([&] { return systemBus->nameStatus(name).isOwned(); }));
  EXPECT_FALSE(sources->isLowPowerModeEnabled());
  call(name, path, "UpdateProperties", [name](sd_bus_message* message) {
    return sd_bus_message_append(message, "sa{sv}", name, 1, "ActiveProfile", "s", "power-saver");
  });
  EXPECT_TRUE(eventually([&] { return sources->isLowPowerModeEnabled(); }));
}

}  // namespace
}  // namespace platform
