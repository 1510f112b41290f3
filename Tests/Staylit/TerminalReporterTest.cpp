#include "Staylit/TerminalReporter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include "Tests/Fakes/FakePorts.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using tidewell::Seconds;

/// The fake clock begins at 09:00:00 UTC.
class TerminalReporterTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(setenv("TZ", "UTC0", 1), 0);
    fakes.defaults.stored["sustainSeconds"] = std::int64_t{1};
    fakes.processes.add(10, "/opt/A");
    fakes.processes.add(11, "/opt/B");
  }

  /// Lets 2 s pass, in which the two applications use these shares of a core, and ticks.
  void tickWith(double percentOfA, double percentOfB) {
    useCPU(10, percentOfA);
    useCPU(11, percentOfB);
    fakes.clock.advance(2s);
    engine.tick();
  }

  /// The lines that were printed since the last call.
  std::string printed() { return std::exchange(fakes.console.output, ""); }

  tidewell::FakePorts fakes;
  StaylitEngine engine{fakes.ports};
  TerminalReporter reporter{engine, fakes.console, fakes.clock};

 private:
  void useCPU(std::int32_t pid, double percent) {
    fakes.processes.at(pid).usage.userTime += static_cast<std::uint64_t>(percent * 20'000'000);
  }
};

TEST_F(TerminalReporterTest, SaysNothingBeforeTheFirstTick) {
  EXPECT_EQ(printed(), "");
}

TEST_F(TerminalReporterTest, PrintsTheTimeAndTheStatusOfAChange) {
  engine.tick();
  EXPECT_EQ(printed(), "09:00:00  Work stopped \u2014 releasing in 120s\n");
  fakes.clock.advance(3723s);
  engine.tick();
  EXPECT_EQ(printed(), "10:02:03  Idle \u2014 your Mac can sleep\n");
}

TEST_F(TerminalReporterTest, ACountdownIsNoChange) {
  engine.tick();
  printed();
  tickWith(0, 0);
  tickWith(0, 0);
  EXPECT_EQ(printed(), "");
}

TEST_F(TerminalReporterTest, PrintsWhatWorksAndWhy) {
  engine.tick();
  tickWith(80, 40);
  printed();
  tickWith(80, 40);
  EXPECT_EQ(printed(), "09:00:04  Awake for A +1 more  |  A: 80% CPU  |  B: 40% CPU\n");
}

TEST_F(TerminalReporterTest, PrintsWhoAskedToStayAwake) {
  fakes.assertions.hold(500, "PreventSystemSleep");
  fakes.applications.add(500, "com.example.player", "Player");
  engine.tick();
  printed();
  tickWith(0, 0);
  EXPECT_EQ(printed(),
            "09:00:02  Awake for com.example.player  |  com.example.player: asked to stay awake\n");
}

TEST_F(TerminalReporterTest, AnotherOrderOfTheSameApplicationsIsNoChange) {
  engine.tick();
  tickWith(80, 40);
  tickWith(80, 40);
  printed();
  tickWith(40, 80);
  EXPECT_EQ(printed(), "");
}

TEST_F(TerminalReporterTest, AnotherSetOfApplicationsIsAChange) {
  engine.tick();
  tickWith(80, 40);
  tickWith(80, 40);
  printed();
  tickWith(0, 50);
  EXPECT_EQ(printed(), "09:00:06  Awake for B  |  B: 50% CPU\n");
}

TEST_F(TerminalReporterTest, AnotherReasonOfABlockIsAChange) {
  fakes.powerSources.setBattery(10);
  engine.tick();
  EXPECT_EQ(printed(), "09:00:00  Not holding \u2014 battery below 20%\n");
  engine.tick();
  EXPECT_EQ(printed(), "");
  fakes.powerSources.lowPowerMode = true;
  engine.tick();
  EXPECT_EQ(printed(), "09:00:00  Not holding \u2014 Low Power Mode is on\n");
}

TEST_F(TerminalReporterTest, PrintsPausing) {
  engine.setPaused(true);
  engine.setPaused(true);
  EXPECT_EQ(printed(), "09:00:00  Paused\n");
}

TEST_F(TerminalReporterTest, WritesNothingToStandardError) {
  engine.tick();
  EXPECT_EQ(fakes.console.error, "");
}

TEST(TerminalReporter, SaysNothingOnceItIsGone) {
  tidewell::FakePorts fakes;
  StaylitEngine engine(fakes.ports);
  { const TerminalReporter reporter(engine, fakes.console, fakes.clock); }
  engine.tick();
  EXPECT_EQ(fakes.console.output, "");
}

}  // namespace
}  // namespace staylit
