#include "Platform/Linux/Sleep/MateIdleTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

#include "Tests/Platform/Sleep/SleepTest.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/FakeXServer.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using namespace std::chrono_literals;

constexpr const char* kMate = "org.mate.PowerManager";

class MateIdleTimeTest : public SleepTest {
 protected:
  /// How often the server is told, where nobody has been there for so long.
  int restartsAfter(std::chrono::milliseconds idle) {
    FakeXServer server(idle);
    restartMateIdleTime(*sessionBus, [&server] { return std::optional(server.address()); });
    return server.restarts();
  }
};

TEST_F(MateIdleTimeTest, IsCountedAnewWhenMateMayHaveMissedIt) {
  const auto desktop = sessionService(kMate);
  EXPECT_EQ(restartsAfter(1min), 1);
  EXPECT_EQ(restartsAfter(3h), 1);
}

TEST_F(MateIdleTimeTest, GoesOnWhileMateIsStillToNotice) {
  const auto desktop = sessionService(kMate);
  EXPECT_EQ(restartsAfter(1min - 1ms), 0);
}

TEST_F(MateIdleTimeTest, IsNothingToOtherDesktops) {
  EXPECT_EQ(restartsAfter(3h), 0);
}

TEST_F(MateIdleTimeTest, NeedsAServer) {
  const auto desktop = sessionService(kMate);
  bool isAskedFor = false;
  restartMateIdleTime(*sessionBus, [&isAskedFor] {
    isAskedFor = true;
    return std::optional<XAddress>();
  });
  EXPECT_TRUE(isAskedFor);
}

TEST_F(MateIdleTimeTest, IsCountedAnewFromTheEndOfTheLastHoldOfTheDisplay) {
  const auto desktop = sessionService(kMate);
  const auto manager = sessionService(kGnome);
  FakeXServer server(3h);
  SleepInhibitors holds(
      *systemBus, *sessionBus, *loop, [this] { return now; },
      [&server] { return std::optional(server.address()); });
  const auto first = holds.createAssertion(kDisplay, "a");
  const auto second = holds.createAssertion(kDisplay, "b");
  const auto plain = holds.createAssertion(kSystem, "c");
  holds.releaseAssertion(first.id);
  EXPECT_EQ(XServer::connect(server.address())->idleTime(), 3h);
  holds.releaseAssertion(second.id);
  holds.releaseAssertion(plain.id);
  EXPECT_EQ(server.restarts(), 1);
}

}  // namespace
}  // namespace platform
