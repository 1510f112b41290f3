#include "Platform/Linux/Sleep/XfceIdleTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "Tests/Platform/Sleep/SleepTest.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/FakeXServer.h"
#include "Tests/Platform/Support/FakeXfconf.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using namespace std::chrono_literals;

constexpr const char* kOnAC = "/xfce4-power-manager/inactivity-on-ac";
constexpr const char* kOnBattery = "/xfce4-power-manager/inactivity-on-battery";

/// XFCE sends the machine to sleep after 20 minutes on AC, and never on battery.
class XfceIdleTimeTest : public SleepTest {
 protected:
  std::unique_ptr<BusService> xfce() {
    return fakeXfconf(sessionDaemon->address(), {{kOnAC, 20U}, {kOnBattery, 14U}});
  }
  /// How often the server is told, where nobody has been there for so long.
  int restartsAfter(std::chrono::milliseconds idle) {
    FakeXServer server(idle);
    restartXfceIdleTime(*sessionBus, [&server] { return std::optional(server.address()); });
    return server.restarts();
  }
};

TEST_F(XfceIdleTimeTest, IsCountedAnewWhenXfceHasLookedDuringTheHold) {
  const auto desktop = xfce();
  EXPECT_EQ(restartsAfter(20min), 1);
  EXPECT_EQ(restartsAfter(3h), 1);
}

TEST_F(XfceIdleTimeTest, GoesOnWhileXfceIsStillToLook) {
  const auto desktop = xfce();
  EXPECT_EQ(restartsAfter(20min - 1ms), 0);
}

TEST_F(XfceIdleTimeTest, GoesOnWhereXfceNeverLooks) {
  const auto desktop = fakeXfconf(sessionDaemon->address(), {{kOnAC, 14U}});
  EXPECT_EQ(restartsAfter(3h), 0);
}

TEST_F(XfceIdleTimeTest, IsNothingToOtherDesktops) {
  const BusService settings(
      sessionDaemon->address(), {"org.xfce.Xfconf"},
      [](sd_bus_message* call) { sd_bus_reply_method_return(call, "v", "u", 20U); });
  EXPECT_EQ(restartsAfter(3h), 0);
}

TEST_F(XfceIdleTimeTest, NeedsAServer) {
  const auto desktop = xfce();
  restartXfceIdleTime(*sessionBus, [] { return std::optional<XAddress>(); });
}

TEST_F(XfceIdleTimeTest, IsCountedAnewFromTheEndOfTheLastHold) {
  const auto desktop = xfce();
  const auto power = sessionService(kPowerManagement);
  FakeXServer server(3h);
  SleepInhibitors holds(
      *systemBus, *sessionBus, *loop, [this] { return now; },
      [&server] { return std::optional(server.address()); });
  const auto first = holds.createAssertion(kSystem, "a");
  const auto second = holds.createAssertion(kDisplay, "b");
  holds.releaseAssertion(first.id);
  EXPECT_EQ(XServer::connect(server.address())->idleTime(), 3h);
  holds.releaseAssertion(second.id);
  EXPECT_EQ(server.restarts(), 1);
}

}  // namespace
}  // namespace platform
