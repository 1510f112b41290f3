// Somebody, or the network, sets the wall clock by a second or by years. No decision depends on it.

#include <gtest/gtest.h>

#include <chrono>

#include "Staylit/StaylitEngine.h"
#include "Tests/Fakes/ComposedPorts.h"
#include "Tests/Staylit/StatusPrinter.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using tidewell::Seconds;

struct ClockStep {
  const char* name;
  Seconds length;
};

constexpr Seconds kOneMinute = 60s;
constexpr Seconds kOneHour = 60 * kOneMinute;
constexpr Seconds kOneDay = 24 * kOneHour;
constexpr Seconds kTenYears = 3652 * kOneDay;

constexpr ClockStep kClockSteps[] = {
    {"OneSecondForward", 1s},         {"OneSecondBack", -Seconds(1s)},
    {"OneMinuteForward", kOneMinute}, {"OneMinuteBack", -kOneMinute},
    {"OneHourForward", kOneHour},     {"OneHourBack", -kOneHour},
    {"OneDayForward", kOneDay},       {"OneDayBack", -kOneDay},
    {"TenYearsForward", kTenYears},   {"TenYearsBack", -kTenYears},
};

/// An engine with a grace period of 120 s and a sustain time of 10 s, and one tool that may work.
class ClockStepsTest : public testing::TestWithParam<ClockStep> {
 protected:
  ClockStepsTest() {
    fakes.processes.add(10, "/opt/tool");
    engine.tick();
  }

  void tick() {
    if (works) fakes.processes.at(10).usage.userTime += 1'000'000'000;
    fakes.clock.advance(2s);
    engine.tick();
  }
  void tickFor(Seconds duration) {
    for (Seconds gone{}; gone < duration; gone += 2s)
      tick();
  }
  void step() { fakes.clock.stepWallTime(GetParam().length); }

  EngineStatus status() { return engine.status().get(); }
  bool isHeld() { return !fakes.power.live.empty(); }

  tidewell::ComposedPorts fakes;
  bool works = false;
  StaylitEngine engine{fakes.ports};
};

const EngineStatus kHoldingForTheTool = EngineStatus::holding({"tool"});

TEST_P(ClockStepsTest, IdleStaysIdle) {
  tickFor(130s);
  ASSERT_EQ(status(), EngineStatus::idle());
  step();
  for (int ticks = 0; ticks < 100; ++ticks) {
    tick();
    ASSERT_EQ(status(), EngineStatus::idle());
    ASSERT_FALSE(isHeld());
  }
}

TEST_P(ClockStepsTest, ARunIsSustainedAfterTenRealSeconds) {
  tickFor(130s);
  works = true;
  tickFor(6s);
  step();
  tickFor(4s);
  EXPECT_EQ(status(), EngineStatus::idle()) << "8 s after the tick that began it";
  tick();
  EXPECT_EQ(status(), kHoldingForTheTool);
  EXPECT_TRUE(isHeld());
}

TEST_P(ClockStepsTest, WorkingStaysHeldAndQuietIsReleasedAfterTheGracePeriod) {
  works = true;
  tickFor(20s);
  ASSERT_EQ(status(), kHoldingForTheTool);
  step();
  for (int ticks = 0; ticks < 100; ++ticks) {
    tick();
    ASSERT_EQ(status(), kHoldingForTheTool);
    ASSERT_TRUE(isHeld());
  }
  works = false;
  tick();
  EXPECT_EQ(status(), EngineStatus::winding(120));
  tickFor(118s);
  EXPECT_EQ(status(), EngineStatus::winding(2));
  tick();
  EXPECT_EQ(status(), EngineStatus::idle());
  EXPECT_FALSE(isHeld());
}

TEST_P(ClockStepsTest, TheGracePeriodEndsWhenItWouldHaveEnded) {
  tickFor(60s);
  ASSERT_EQ(status(), EngineStatus::winding(60));
  step();
  tick();
  EXPECT_EQ(status(), EngineStatus::winding(58));
  tickFor(56s);
  EXPECT_EQ(status(), EngineStatus::winding(2));
  tick();
  EXPECT_EQ(status(), EngineStatus::idle());
  EXPECT_FALSE(isHeld());
}

TEST_P(ClockStepsTest, PausedStaysPausedAndResumesWithTheFullGracePeriod) {
  works = true;
  tickFor(20s);
  engine.setPaused(true);
  step();
  tickFor(20s);
  EXPECT_EQ(status(), EngineStatus::paused());
  EXPECT_FALSE(isHeld());
  works = false;
  engine.setPaused(false);
  EXPECT_EQ(status(), EngineStatus::winding(120));
  tickFor(118s);
  EXPECT_EQ(status(), EngineStatus::winding(2));
  tick();
  EXPECT_EQ(status(), EngineStatus::idle());
}

INSTANTIATE_TEST_SUITE_P(By, ClockStepsTest, testing::ValuesIn(kClockSteps),
                         [](const auto& step) { return step.param.name; });

}  // namespace
}  // namespace staylit
