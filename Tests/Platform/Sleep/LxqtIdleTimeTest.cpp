#include "Platform/Linux/Sleep/LxqtIdleTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "Tests/Fakes/FakeMainLoop.h"
#include "Tests/Platform/Sleep/SleepTest.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/FakeXServer.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using namespace std::chrono_literals;

/// The watcher's numbers of what it does.
constexpr int kSuspendNumber = 4;
constexpr int kDarkenNumber = 5;

/// Times as Qt keeps them.
constexpr const char* kMinute = R"(\0\0\0\xf\0\0\xea`)";
constexpr const char* kQuarterOfAnHour = R"(\0\0\0\xf\0\r\xbb\xa0)";

/// LXQt's watcher does something after a minute on AC power.
class LxqtIdleTimeTest : public SleepTest {
 protected:
  std::unique_ptr<BusService> lxqt(int action, const std::string& time = kMinute) {
    std::filesystem::create_directories(folder.path() / "lxqt");
    folder.write("lxqt/lxqt-powermanagement.conf",
                 "[General]\nenableIdlenessWatcher=true\nidlenessACTime=@Variant(" + time +
                     ")\nidlenessACAction=" + std::to_string(action) + "\n");
    return std::make_unique<BusService>(
        sessionDaemon->address(), std::vector<std::string>{"org.lxqt.lxqt-powermanagement"},
        [](sd_bus_message* call) {
          sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown");
        });
  }
  static FindXServer at(const FakeXServer& server) {
    return [&server] { return std::optional(server.address()); };
  }
  /// How often the server is told, where nobody has been there for so long.
  int restartsAfter(std::chrono::milliseconds idle, tidewell::AssertionKind kind = kSystem) {
    FakeXServer server(idle);
    keepOffLxqt(*sessionBus, at(server), kind);
    return server.restarts();
  }
  static std::chrono::milliseconds idleAt(const FakeXServer& server) {
    return XServer::connect(server.address())->idleTime().value();
  }

  TemporaryFolder folder;
  ScopedEnvironment own{"XDG_CONFIG_HOME", folder.path().string()};
  ScopedEnvironment shared{"XDG_CONFIG_DIRS", "/nonexistent"};
  ScopedEnvironment wayland{"WAYLAND_DISPLAY", nullptr};
};

TEST_F(LxqtIdleTimeTest, IsCountedAnewBeforeTheWatcherActs) {
  const auto desktop = lxqt(kSuspendNumber);
  EXPECT_EQ(restartsAfter(30s), 1);
  EXPECT_EQ(restartsAfter(30s - 1ms), 0);
}

TEST_F(LxqtIdleTimeTest, IsLookedAtAgainInTime) {
  const auto desktop = lxqt(kSuspendNumber);
  const FakeXServer server(0s);
  EXPECT_EQ(keepOffLxqt(*sessionBus, at(server), kSystem), tidewell::Seconds(15));
}

TEST_F(LxqtIdleTimeTest, LeavesTimeForWhateverDarkensTheScreenSooner) {
  const auto desktop = lxqt(kSuspendNumber, kQuarterOfAnHour);
  EXPECT_EQ(restartsAfter(15min - 30s - 1ms), 0);
  EXPECT_EQ(restartsAfter(15min - 30s), 1);
}

TEST_F(LxqtIdleTimeTest, IsCountedAnewBehindADarkScreen) {
  const auto desktop = lxqt(kSuspendNumber);
  FakeXServer server(50s);
  server.setDark(true);
  keepOffLxqt(*sessionBus, at(server), kSystem);
  EXPECT_TRUE(server.isDark());
  EXPECT_EQ(idleAt(server), 0s);
}

TEST_F(LxqtIdleTimeTest, IsCountedAnewBeforeALitScreenDuringAHoldOfTheDisplay) {
  const auto desktop = lxqt(kSuspendNumber);
  FakeXServer server(50s);
  server.setDark(true);
  keepOffLxqt(*sessionBus, at(server), kDisplay);
  EXPECT_FALSE(server.isDark());
}

TEST_F(LxqtIdleTimeTest, GoesOnToADarkScreenUnlessThatIsHeld) {
  const auto desktop = lxqt(kDarkenNumber);
  EXPECT_EQ(restartsAfter(50s), 0);
  EXPECT_EQ(restartsAfter(50s, kDisplay), 1);
}

TEST_F(LxqtIdleTimeTest, IsNothingToOtherDesktopsNorOnWayland) {
  { const auto desktop = lxqt(kSuspendNumber); }
  EXPECT_EQ(restartsAfter(50s), 0);
  const auto desktop = lxqt(kSuspendNumber);
  const ScopedEnvironment display("WAYLAND_DISPLAY", "wayland-0");
  EXPECT_EQ(restartsAfter(50s), 0);
}

TEST_F(LxqtIdleTimeTest, IsAskedForAgainWhereThereIsNoServerYet) {
  const auto desktop = lxqt(kSuspendNumber);
  const FindXServer nowhere = [] { return std::optional<XAddress>(); };
  EXPECT_EQ(keepOffLxqt(*sessionBus, nowhere, kSystem), tidewell::Seconds(15));
}

TEST_F(LxqtIdleTimeTest, IsCountedAnewThroughoutAHoldAndNotAfterIt) {
  const auto desktop = lxqt(kSuspendNumber);
  FakeXServer server(50s);
  tidewell::FakeMainLoop timers;
  SleepInhibitors holds(
      *systemBus, *sessionBus, timers, [this] { return now; }, at(server));
  const auto idleAfter = [&](std::chrono::seconds idle) {
    server.setIdle(idle);
    now += 15s;
    timers.fireTimers();
    return idleAt(server);
  };
  const auto hold = holds.createAssertion(kSystem, "a");
  EXPECT_EQ(idleAt(server), 0s);
  EXPECT_EQ(idleAfter(15s), 15s);
  EXPECT_EQ(idleAfter(30s), 0s);
  EXPECT_EQ(idleAfter(30s), 0s);
  holds.releaseAssertion(hold.id);
  EXPECT_EQ(idleAfter(50s), 50s);
}

TEST_F(LxqtIdleTimeTest, IsCountedAnewWhenTheWatcherStartsDuringAHold) {
  // Of two that watch one name on one bus, the first hears of it before the other.
  inhibitors.reset();
  FakeXServer server(50s);
  SleepInhibitors holds(
      *systemBus, *sessionBus, *loop, [this] { return now; }, at(server));
  holds.createAssertion(kSystem, "a");
  EXPECT_EQ(idleAt(server), 50s);
  const auto desktop = lxqt(kSuspendNumber);
  EXPECT_TRUE(eventually([&] { return idleAt(server) == 0s; }));
}

}  // namespace
}  // namespace platform
