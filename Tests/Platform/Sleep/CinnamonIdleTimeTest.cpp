#include "Platform/Linux/Sleep/CinnamonIdleTime.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"
#include "Tests/Platform/Sleep/SleepTest.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/FakeSettingsTool.h"
#include "Tests/Platform/Support/FakeXServer.h"
#include "Tests/Platform/Support/RunUntil.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using namespace std::chrono_literals;
using std::chrono::seconds;

constexpr const char* kCinnamon = "org.cinnamon.SettingsDaemon.Power";
const std::string kOnAC = "org.cinnamon.settings-daemon.plugins.power sleep-inactive-ac-timeout";
const std::string kOnBattery =
    "org.cinnamon.settings-daemon.plugins.power sleep-inactive-battery-timeout";

/// Cinnamon's session manager and power management. The latter looks at the idle time when the
/// last inhibitor is given back, and waits for its setting's time, doubled until it is longer.
class FakeCinnamon {
 public:
  FakeCinnamon(const std::string& address, const FakeXServer& server, seconds timeout)
      : server_(server),
        timeout_(timeout),
        service_(address, {kGnome, kCinnamon}, [this](auto* call) { answer(call); }) {}

  /// It wants the machine to sleep, and is refused. So it does nothing until somebody is there.
  void refuse() { refusedAt_ = idle(); }

  [[nodiscard]] bool isHeld() const { return held_ > 0; }
  /// After how long the machine sleeps; absent when it does not.
  [[nodiscard]] std::optional<seconds> asleepAfter() const { return asleepAfter_; }

 private:
  void answer(sd_bus_message* call) {
    const std::string_view member = sd_bus_message_get_member(call);
    if (member == "Inhibit") {
      sd_bus_reply_method_return(call, "u", static_cast<std::uint32_t>(++held_));
    } else if (member == "Uninhibit") {
      if (held_ == 1) look();
      --held_;
    } else {
      sd_bus_reply_method_errorf(call, SD_BUS_ERROR_UNKNOWN_METHOD, "unknown");
    }
  }
  [[nodiscard]] std::chrono::milliseconds idle() const {
    return XServer::connect(server_.address())->idleTime().value();
  }
  void look() {
    const auto idleNow = idle();
    if (refusedAt_ && idleNow >= *refusedAt_) return;
    seconds timeout = timeout_;
    while (timeout < idleNow + 2s)
      timeout *= 2;
    asleepAfter_ = timeout - std::chrono::duration_cast<seconds>(idleNow);
  }

  const FakeXServer& server_;
  const seconds timeout_;
  std::atomic<int> held_ = 0;
  std::optional<std::chrono::milliseconds> refusedAt_;
  std::optional<seconds> asleepAfter_;  ///< Written while there is an inhibitor.
  BusService service_;
};

class CinnamonIdleTimeTest : public SleepTest {
 protected:
  /// How often the server is told, where nobody has been there for so long.
  int restartsAfter(std::chrono::milliseconds idle,
                    const std::map<std::string, std::string>& settings) {
    const FakeSettingsTool tool(settings);
    return restartsAfter(idle, tool.path());
  }
  int restartsAfter(std::chrono::milliseconds idle, const std::string& tool) {
    FakeXServer server(idle);
    SpawnedTaskLauncher launcher([](int) { return std::string(); });
    restartCinnamonIdleTime(*sessionBus, DesktopSettings(launcher, tool),
                            [&server] { return std::optional(server.address()); });
    return server.restarts();
  }
  /// Two holds at once, of which the second ends last. Cinnamon's time is 30 minutes.
  void holdTwice(FakeXServer& server) {
    const FakeSettingsTool tool({{kOnAC, "echo 1800"}});
    SleepInhibitors holds(
        *systemBus, *sessionBus, *loop, [this] { return now; },
        [&server] { return std::optional(server.address()); }, tool.path());
    const auto first = holds.createAssertion(kSystem, "a");
    const auto second = holds.createAssertion(kDisplay, "b");
    const auto idle = XServer::connect(server.address())->idleTime();
    holds.releaseAssertion(first.id);
    EXPECT_EQ(XServer::connect(server.address())->idleTime(), idle);
    holds.releaseAssertion(second.id);
  }
};

TEST_F(CinnamonIdleTimeTest, IsCountedAnewWhenItHasPassedTheSettingsTime) {
  const auto desktop = sessionService(kCinnamon);
  EXPECT_EQ(restartsAfter(20min, {{kOnAC, "echo 1200"}}), 1);
  EXPECT_EQ(restartsAfter(5h, {{kOnAC, "echo 1200"}}), 1);
}

TEST_F(CinnamonIdleTimeTest, GoesOnBeforeTheSettingsTimeIsOver) {
  const auto desktop = sessionService(kCinnamon);
  EXPECT_EQ(restartsAfter(19min, {{kOnAC, "echo 1200"}}), 0);
}

TEST_F(CinnamonIdleTimeTest, IsCountedAnewWhereItMayPassTheSettingsTimeBeforeCinnamonLooks) {
  const auto desktop = sessionService(kCinnamon);
  EXPECT_EQ(restartsAfter(20min - 5s, {{kOnAC, "echo 1200"}}), 1);
  EXPECT_EQ(restartsAfter(20min - 5001ms, {{kOnAC, "echo 1200"}}), 0);
}

TEST_F(CinnamonIdleTimeTest, IsComparedWithTheShorterTimeOfTheTwoSourcesOfPower) {
  const auto desktop = sessionService(kCinnamon);
  EXPECT_EQ(restartsAfter(20min, {{kOnAC, "echo 3600"}, {kOnBattery, "echo 1200"}}), 1);
  EXPECT_EQ(restartsAfter(20min, {{kOnAC, "echo 0"}, {kOnBattery, "echo 1200"}}), 1);
  EXPECT_EQ(restartsAfter(20min, {{kOnAC, "echo 3600"}, {kOnBattery, "echo 0"}}), 0);
}

TEST_F(CinnamonIdleTimeTest, GoesOnWhereTheMachineNeverSleeps) {
  const auto desktop = sessionService(kCinnamon);
  EXPECT_EQ(restartsAfter(5h, {{kOnAC, "echo 0"}, {kOnBattery, "echo 0"}}), 0);
}

TEST_F(CinnamonIdleTimeTest, GoesOnWhereTheSettingIsNotKnown) {
  const auto desktop = sessionService(kCinnamon);
  EXPECT_EQ(restartsAfter(5h, "/nonexistent/tool"), 0);
  EXPECT_EQ(restartsAfter(5h, {{kOnAC, "echo soon"}}), 0);
  EXPECT_EQ(restartsAfter(5h, {{kOnAC, "echo 9223372036854775807"}}), 0);
}

TEST_F(CinnamonIdleTimeTest, IsNothingToOtherDesktops) {
  EXPECT_EQ(restartsAfter(5h, {{kOnAC, "echo 1200"}}), 0);
}

TEST_F(CinnamonIdleTimeTest, NeedsAServer) {
  const auto desktop = sessionService(kCinnamon);
  SpawnedTaskLauncher launcher([](int) { return std::string(); });
  const FakeSettingsTool tool({{kOnAC, "echo 1200"}});
  bool isAskedFor = false;
  restartCinnamonIdleTime(*sessionBus, DesktopSettings(launcher, tool.path()), [&isAskedFor] {
    isAskedFor = true;
    return std::optional<XAddress>();
  });
  EXPECT_TRUE(isAskedFor);
}

TEST_F(CinnamonIdleTimeTest, LetsTheMachineSleepAfterTheLastHoldWhenItsTimeIsOver) {
  FakeXServer server(5h);
  const FakeCinnamon desktop(sessionDaemon->address(), server, 30min);
  holdTwice(server);
  ASSERT_TRUE(runUntil(*loop, [&desktop] { return !desktop.isHeld(); }));
  EXPECT_EQ(desktop.asleepAfter(), 30min);
  EXPECT_EQ(server.restarts(), 1);
}

TEST_F(CinnamonIdleTimeTest, LetsTheMachineSleepThatWasToSleepDuringTheHold) {
  FakeXServer server(31min);
  FakeCinnamon desktop(sessionDaemon->address(), server, 30min);
  desktop.refuse();
  holdTwice(server);
  ASSERT_TRUE(runUntil(*loop, [&desktop] { return !desktop.isHeld(); }));
  EXPECT_EQ(desktop.asleepAfter(), 30min);
}

}  // namespace
}  // namespace platform
