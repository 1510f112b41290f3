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
const std::string kSchema = "org.cinnamon.settings-daemon.plugins.power ";
const std::string kOnAC = kSchema + "sleep-inactive-ac-timeout";
const std::string kActionOnAC = kSchema + "sleep-inactive-ac-type";
const std::string kOnBattery = kSchema + "sleep-inactive-battery-timeout";
const std::string kActionOnBattery = kSchema + "sleep-inactive-battery-type";

using Settings = std::map<std::string, std::string>;

/// Cinnamon lets the machine sleep after so many seconds on AC, and on battery.
Settings timeouts(const std::string& onAC, const std::string& onBattery) {
  return {{kOnAC, "echo " + onAC},
          {kActionOnAC, "echo \"'suspend'\""},
          {kOnBattery, "echo " + onBattery},
          {kActionOnBattery, "echo \"'suspend'\""}};
}

/// Cinnamon's session manager and power management. The latter looks at the idle time when the
/// last inhibitor is given back, and waits for its setting's time, doubled until it is longer.
class FakeCinnamon {
 public:
  FakeCinnamon(const std::string& address, const FakeXServer& server, seconds timeout)
      : server_(server),
        timeout_(timeout),
        service_(address, {kGnome, kCinnamon}, [this](auto* call) { answer(call); }) {}

  /// It has let the machine sleep, which a hold prevented. So it does nothing until somebody is
  /// there.
  void letItSleepInVain() { inVainAt_ = idle(); }

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
    if (idleNow >= inVainAt_.load()) return;
    seconds timeout = timeout_;
    while (timeout < idleNow + 2s)
      timeout *= 2;
    asleepAfter_ = timeout - std::chrono::duration_cast<seconds>(idleNow);
  }

  const FakeXServer& server_;
  const seconds timeout_;
  std::atomic<int> held_ = 0;
  std::atomic<std::chrono::milliseconds> inVainAt_ = std::chrono::milliseconds::max();
  std::optional<seconds> asleepAfter_;  ///< Written while there is an inhibitor.
  BusService service_;
};

class CinnamonIdleTimeTest : public SleepTest {
 protected:
  /// How often the server is told, where nobody has been there for so long.
  int restartsAfter(std::chrono::milliseconds idle, const Settings& settings) {
    const FakeSettingsTool tool(settings);
    return restartsAfter(idle, tool.path());
  }
  int restartsAfter(std::chrono::milliseconds idle, const std::string& tool) {
    FakeXServer server(idle);
    SpawnedTaskLauncher launcher([](int) { return std::string(); });
    restartCinnamonIdleTime(*systemBus, *sessionBus, DesktopSettings(launcher, tool),
                            [&server] { return std::optional(server.address()); });
    return server.restarts();
  }
  /// Two holds at once, of which the second ends last. Cinnamon's time is 30 minutes.
  void holdTwice(FakeXServer& server, const FakeCinnamon& desktop) {
    const FakeSettingsTool tool(timeouts("1800", "900"));
    const auto findServer = [&] {
      // What was sent to Cinnamon before is received when it answers this.
      sessionBus->call({kGnome, "/", kGnome, "IsSessionRunning"});
      EXPECT_TRUE(desktop.isHeld());
      return std::optional(server.address());
    };
    SleepInhibitors holds(
        *systemBus, *sessionBus, *loop, [this] { return now; }, findServer, tool.path());
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
  EXPECT_EQ(restartsAfter(20min, timeouts("1200", "600")), 1);
  EXPECT_EQ(restartsAfter(5h, timeouts("1200", "600")), 1);
}

TEST_F(CinnamonIdleTimeTest, GoesOnBeforeTheSettingsTimeIsOver) {
  const auto desktop = sessionService(kCinnamon);
  EXPECT_EQ(restartsAfter(19min, timeouts("1200", "600")), 0);
}

TEST_F(CinnamonIdleTimeTest, IsCountedAnewWhereItMayPassTheSettingsTimeBeforeCinnamonLooks) {
  const auto desktop = sessionService(kCinnamon);
  EXPECT_EQ(restartsAfter(20min - 5s, timeouts("1200", "600")), 1);
  EXPECT_EQ(restartsAfter(20min - 5001ms, timeouts("1200", "600")), 0);
}

TEST_F(CinnamonIdleTimeTest, IsComparedWithTheTimeForThePowerSourceOfNow) {
  const auto desktop = sessionService(kCinnamon);
  FakeLogind logind(systemDaemon->address());
  logind.setMachine({"ignore", 0, true, "yes"});
  EXPECT_EQ(restartsAfter(20min, timeouts("3600", "1200")), 0);
  EXPECT_EQ(restartsAfter(20min, timeouts("0", "1200")), 0);
  logind.setMachine({"ignore", 0, false, "yes"});
  EXPECT_EQ(restartsAfter(20min, timeouts("3600", "1200")), 1);
}

TEST_F(CinnamonIdleTimeTest, GoesOnWhereTheMachineNeverSleeps) {
  const auto desktop = sessionService(kCinnamon);
  EXPECT_EQ(restartsAfter(5h, timeouts("0", "0")), 0);
  EXPECT_EQ(restartsAfter(5h, {{kOnAC, "echo 1200"}, {kActionOnAC, "echo \"'nothing'\""}}), 0);
}

TEST_F(CinnamonIdleTimeTest, GoesOnWhereTheSettingIsNotKnown) {
  const auto desktop = sessionService(kCinnamon);
  EXPECT_EQ(restartsAfter(5h, "/nonexistent/tool"), 0);
  EXPECT_EQ(restartsAfter(5h, timeouts("soon", "soon")), 0);
  EXPECT_EQ(restartsAfter(5h, {{kOnAC, "echo 1200"}}), 0);
  EXPECT_EQ(restartsAfter(5h, timeouts("9223372036854775807", "600")), 0);
}

TEST_F(CinnamonIdleTimeTest, IsNothingToOtherDesktops) {
  EXPECT_EQ(restartsAfter(5h, timeouts("1200", "600")), 0);
}

TEST_F(CinnamonIdleTimeTest, NeedsAServer) {
  const auto desktop = sessionService(kCinnamon);
  SpawnedTaskLauncher launcher([](int) { return std::string(); });
  const FakeSettingsTool tool(timeouts("1200", "600"));
  bool isAskedFor = false;
  restartCinnamonIdleTime(*systemBus, *sessionBus, DesktopSettings(launcher, tool.path()),
                          [&isAskedFor] {
                            isAskedFor = true;
                            return std::optional<XAddress>();
                          });
  EXPECT_TRUE(isAskedFor);
}

TEST_F(CinnamonIdleTimeTest, LetsTheMachineSleepAfterTheLastHoldWhenItsTimeIsOver) {
  FakeXServer server(5h);
  const FakeCinnamon desktop(sessionDaemon->address(), server, 30min);
  holdTwice(server, desktop);
  ASSERT_TRUE(runUntil(*loop, [&desktop] { return !desktop.isHeld(); }));
  EXPECT_EQ(desktop.asleepAfter(), 30min);
  EXPECT_EQ(server.restarts(), 1);
}

TEST_F(CinnamonIdleTimeTest, LetsTheMachineSleepThatWasToSleepWhenTheHoldBegan) {
  FakeXServer server(31min);
  FakeCinnamon desktop(sessionDaemon->address(), server, 30min);
  desktop.letItSleepInVain();
  holdTwice(server, desktop);
  ASSERT_TRUE(runUntil(*loop, [&desktop] { return !desktop.isHeld(); }));
  EXPECT_EQ(desktop.asleepAfter(), 30min);
}

}  // namespace
}  // namespace platform
