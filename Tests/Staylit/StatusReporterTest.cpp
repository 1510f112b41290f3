#include "Staylit/StatusReporter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>

#include "Tests/Fakes/FakePorts.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using State = StatusReport::State;

/// The fake clock begins at 09:00:00 UTC.
class StatusReporterTest : public testing::Test {
 protected:
  void SetUp() override {
    fakes.defaults.stored["sustainSeconds"] = std::int64_t{4};
    fakes.processes.add(10, "/opt/A");
    fakes.processes.add(11, "/opt/B");
  }

  /// Ticks 2 s later, for all of which the two applications used these shares of a core, and lets
  /// the loop do what was posted.
  void tickWith(double percentOfA, double percentOfB = 0) {
    useCPU(10, percentOfA);
    useCPU(11, percentOfB);
    fakes.clock.advance(2s);
    tick();
  }
  void tick() {
    engine.tick();
    fakes.mainLoop.runPosted();
  }

  std::string sinceNine() {
    const auto nine = std::chrono::sys_days(std::chrono::year(2024) / 5 / 17) + 9h;
    return std::to_string(
        std::chrono::duration_cast<std::chrono::seconds>(reporter.report().since - nine).count());
  }

  tidewell::FakePorts fakes;
  StaylitEngine engine{fakes.ports};
  StatusReporter reporter{engine, fakes.ports};
  int told = 0;
  Subscription subscription = reporter.observe([this] { ++told; });

 private:
  void useCPU(std::int32_t pid, double percent) {
    fakes.processes.at(pid).usage.userTime += static_cast<std::uint64_t>(percent * 20'000'000);
  }
};

TEST_F(StatusReporterTest, ReportsAQuietEngineBeforeItsFirstTick) {
  const StatusReport report = reporter.report();
  EXPECT_EQ(report.state, State::idle);
  EXPECT_EQ(report.summary, "Idle \u2014 your Mac can sleep");
  EXPECT_FALSE(report.isHeld());
  EXPECT_EQ(report.reason, "");
  EXPECT_EQ(sinceNine(), "0");
}

TEST_F(StatusReporterTest, ReportsTheGracePeriodWithItsHold) {
  fakes.power.grants = {{"org.example.Sleep", fakes.clock.now() + 1s}};
  tick();
  fakes.clock.advance(5s);
  tick();
  const StatusReport report = reporter.report();
  EXPECT_EQ(report.state, State::winding);
  EXPECT_EQ(report.summary, "Work stopped \u2014 releasing in 115s");
  EXPECT_EQ(report.releasesIn, 115);
  EXPECT_EQ(report.reason, "waiting for work to resume");
  ASSERT_EQ(report.services.size(), 1U);
  EXPECT_EQ(report.services[0].name, "org.example.Sleep");
  EXPECT_EQ(report.services[0].seenAt, fakes.clock.wallTime() - 4s);
  EXPECT_EQ(sinceNine(), "0");
}

TEST_F(StatusReporterTest, ReportsWhatACandidateStillLacks) {
  tick();
  tickWith(80);
  tickWith(80);
  const StatusReport report = reporter.report();
  EXPECT_TRUE(report.busy.empty());
  ASSERT_EQ(report.candidates.size(), 1U);
  EXPECT_EQ(report.candidates[0].id, "A");
  EXPECT_EQ(report.candidates[0].busyFor, 2);
  EXPECT_EQ(report.sustainSeconds, 4);
}

TEST_F(StatusReporterTest, ReportsBusyOnesNoLongerAsCandidates) {
  tick();
  tickWith(80);
  tickWith(80);
  tickWith(80, 40);
  const StatusReport report = reporter.report();
  EXPECT_EQ(report.state, State::holding);
  EXPECT_EQ(report.names, std::vector<std::string>{"A"});
  EXPECT_EQ(report.reason, "A is working");
  ASSERT_EQ(report.busy.size(), 1U);
  EXPECT_EQ(report.busy[0].cpuPercent, 80);
  ASSERT_EQ(report.candidates.size(), 1U);
  EXPECT_EQ(report.candidates[0].id, "B");
  EXPECT_TRUE(report.isHeld());
}

TEST_F(StatusReporterTest, ReportsWhoElseAsks) {
  fakes.assertions.hold(500, "PreventSystemSleep");
  fakes.applications.add(500, "com.example.player", "Player");
  tick();
  tickWith(0);
  EXPECT_EQ(reporter.report().asking, std::vector<std::string>{"com.example.player"});
}

TEST_F(StatusReporterTest, ReportsTheOwnWordsOfWhoAsks) {
  fakes.assertions.holders = {{500, {{"PreventSystemSleep", 255, "Nightly backup", "Backup tool"}}},
                              {501, {{"PreventSystemSleep", 255, ""}}}};
  fakes.applications.add(500, std::nullopt, "systemd-inhibit");
  fakes.applications.add(501, std::nullopt, "quiet");
  tick();
  tickWith(0);
  const StatusReport report = reporter.report();
  EXPECT_EQ(report.asking, (std::vector<std::string>{"quiet", "systemd-inhibit"}));
  EXPECT_EQ(
      report.askingWords,
      (std::vector<tidewell::AskingProgram>{{"systemd-inhibit", "Backup tool: Nightly backup"}}));
}

TEST_F(StatusReporterTest, ReportsWhyAHoldIsForbidden) {
  fakes.powerSources.setBattery(10);
  tick();
  const StatusReport report = reporter.report();
  EXPECT_EQ(report.state, State::blocked);
  EXPECT_EQ(report.reason, "battery below 20%");
  EXPECT_EQ(report.power.percentage, 10);
  EXPECT_FALSE(report.power.onAC);
  EXPECT_FALSE(report.isHeld());
}

TEST_F(StatusReporterTest, ReportsAHoldThatNobodyGrants) {
  fakes.power.granted = false;
  tick();
  EXPECT_TRUE(reporter.report().wantsHold());
  EXPECT_FALSE(reporter.report().isHeld());
  EXPECT_EQ(reporter.report().reason, "waiting for work to resume");
}

TEST_F(StatusReporterTest, DoesNotTakeAHoldOfTheScreenForOneOfTheMachine) {
  fakes.defaults.stored["keepScreenOn"] = true;
  tick();
  EXPECT_EQ(fakes.power.live.size(), 2U);
  EXPECT_EQ(reporter.report().services.size(), 1U);
}

TEST_F(StatusReporterTest, KeepsTheBeginningOfAStateWhateverElseChanges) {
  tick();
  tickWith(80);
  tickWith(80);
  tickWith(80);
  EXPECT_EQ(sinceNine(), "6");
  tickWith(80, 80);
  tickWith(80, 80);
  tickWith(80, 80);
  EXPECT_EQ(reporter.report().names.size(), 2U);
  EXPECT_EQ(sinceNine(), "6");
  engine.setPaused(true);
  EXPECT_EQ(sinceNine(), "12");
}

TEST_F(StatusReporterTest, SaysSinceWhenByTheClockThatIsOnTheWallNow) {
  tick();
  fakes.clock.advance(10s);
  fakes.clock.stepWallTime(3600s);
  EXPECT_EQ(sinceNine(), "3600");
}

TEST_F(StatusReporterTest, TellsOfAChangeWhenItHasHappened) {
  State seen = State::paused;
  const Subscription looking = reporter.observe([&] { seen = reporter.report().state; });
  tick();
  EXPECT_EQ(told, 1);
  EXPECT_EQ(seen, State::winding);
}

TEST_F(StatusReporterTest, TellsOnceOfAResumeThoughTheStatusChangesTwice) {
  engine.setPaused(true);
  fakes.mainLoop.runPosted();
  told = 0;
  engine.setPaused(false);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 1);
}

TEST_F(StatusReporterTest, TellsOfWorkThatComesAndGoes) {
  tick();
  tickWith(80, 80);
  tickWith(80, 80);
  told = 0;
  tickWith(80, 80);
  EXPECT_EQ(told, 1) << "both";
  tickWith(0, 80);
  EXPECT_EQ(told, 2) << "one";
  tickWith(0, 0);
  EXPECT_EQ(told, 3) << "none";
}

TEST_F(StatusReporterTest, TellsNothingWhileOnlyFiguresChange) {
  tick();
  told = 0;
  fakes.mainLoop.runPosted();
  tickWith(80);
  tickWith(0);
  EXPECT_EQ(told, 0) << "the grace period goes on";
  tickWith(80, 40);
  tickWith(80, 40);
  tickWith(80, 40);
  told = 0;
  tickWith(40, 80);
  tickWith(50, 20);
  EXPECT_EQ(told, 0) << "another order";
}

TEST_F(StatusReporterTest, TellsOfPowerAndOfTheServicesConsent) {
  tick();
  told = 0;
  fakes.powerSources.setBattery(80);
  tick();
  EXPECT_EQ(told, 1);
  fakes.powerSources.setBattery(79);
  tick();
  EXPECT_EQ(told, 1) << "only the charge";
  fakes.power.granted = false;
  tick();
  EXPECT_EQ(told, 2);
}

TEST_F(StatusReporterTest, TellsNobodyOnceTheSubscriptionIsDropped) {
  subscription = {};
  tick();
  EXPECT_EQ(told, 0);
}

TEST(StatusReporter, TellsNothingOnceItIsGone) {
  tidewell::FakePorts fakes;
  StaylitEngine engine(fakes.ports);
  int told = 0;
  Subscription subscription;
  {
    StatusReporter reporter(engine, fakes.ports);
    subscription = reporter.observe([&told] { ++told; });
    engine.tick();
  }
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 0);
}

TEST_F(StatusReporterTest, TellsWhenAPauseEndsByItself) {
  PauseControl pause(engine, fakes.ports);
  reporter.tellEndOf(pause);
  EXPECT_EQ(reporter.report().resumesAt, std::nullopt);
  pause.pause(2h);
  EXPECT_EQ(reporter.report().resumesAt, fakes.clock.wallTime() + 2h);
  pause.pause(std::nullopt);
  EXPECT_EQ(reporter.report().resumesAt, std::nullopt);
}

}  // namespace
}  // namespace staylit
