#include "Staylit/History/HistoryRecorder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/History/HistoryTimeline.h"
#include "Tests/Fakes/FakePorts.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;

class MemoryLog : public HistoryLog {
 public:
  void append(const HistoryEvent& event) override { events.push_back(event); }
  void refresh() override { ++refreshed; }

  std::vector<HistoryEvent> events;
  int refreshed = 0;
};

class HistoryRecorderTest : public testing::Test {
 protected:
  void SetUp() override {
    fakes.defaults.stored["sustainSeconds"] = std::int64_t{4};
    fakes.processes.add(10, "/opt/A");
    fakes.processes.add(11, "/opt/B");
    fakes.power.grants = {{"org.example.Sleep", std::nullopt}};
  }

  void record() { recorder = std::make_unique<HistoryRecorder>(engine, fakes.ports, log); }

  /// Ticks 2 s later, for all of which the two applications used these shares of a core.
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
  void tickFor(int ticks) {
    for (int count = 0; count < ticks; ++count)
      tickWith(0);
  }

  /// The events since the last call, without their times, one a line: the member "kind" and all
  /// after it.
  std::string news() {
    std::string text;
    for (; told < log.events.size(); ++told) {
      const std::string line = textOf(log.events[told]);
      const std::string after = line.substr(line.find("\"kind\":") + 7);
      text += after.substr(0, after.size() - 1) + "\n";
    }
    return text;
  }
  /// The same, when only these kinds count.
  std::string newsOf(const std::string& kind) {
    std::string text;
    for (; told < log.events.size(); ++told) {
      const std::string line = textOf(log.events[told]);
      if (line.find("\"kind\":\"" + kind + "\"") == std::string::npos) continue;
      const std::string after = line.substr(line.find("\"kind\":") + 7);
      text += after.substr(0, after.size() - 1) + "\n";
    }
    return text;
  }

  tidewell::FakePorts fakes;
  StaylitEngine engine{fakes.ports};
  MemoryLog log;
  std::unique_ptr<HistoryRecorder> recorder;
  std::size_t told = 0;

 private:
  void useCPU(std::int32_t pid, double percent) {
    fakes.processes.at(pid).usage.userTime += static_cast<std::uint64_t>(percent * 20'000'000);
  }
};

TEST_F(HistoryRecorderTest, BeginsWithTheStartAndWhatTheFirstTickFinds) {
  record();
  EXPECT_EQ(news(), "\"started\",\"version\":\"0.1.0\"\n");
  tick();
  EXPECT_EQ(news(),
            "\"power\",\"onAC\":true,\"hasBattery\":false,\"percent\":100,\"lowPowerMode\":false\n"
            "\"state\",\"state\":\"winding\",\"reason\":\"waiting for work to resume\","
            "\"services\":[\"org.example.Sleep\"]\n");
}

TEST_F(HistoryRecorderTest, RecordsAHoldWithItsWorkAndFigures) {
  record();
  tick();
  news();
  tickWith(80);
  tickWith(80);
  EXPECT_EQ(news(), "") << "not for long enough yet";
  tickWith(100);
  EXPECT_EQ(news(),
            "\"workBegan\",\"key\":\"A\",\"name\":\"A\",\"category\":\"Other\","
            "\"overFor\":4.0,\"figures\":[100.0,0.0,0.0]\n"
            "\"state\",\"state\":\"holding\",\"reason\":\"A is working\",\"names\":[\"A\"],"
            "\"services\":[\"org.example.Sleep\"]\n");
  tickWith(200);
  tickWith(60);
  EXPECT_EQ(news(), "") << "figures alone are no event";
  tickWith(0);
  EXPECT_EQ(news(),
            "\"workEnded\",\"key\":\"A\",\"peak\":[200.0,0.0,0.0],\"mean\":[120.0,0.0,0.0]\n"
            "\"state\",\"state\":\"winding\",\"reason\":\"waiting for work to resume\","
            "\"services\":[\"org.example.Sleep\"]\n");
}

TEST_F(HistoryRecorderTest, RecordsEachChangeOfTheReason) {
  record();
  tick();
  for (int count = 0; count < 3; ++count)
    tickWith(80, 40);
  news();
  tickWith(40, 80);
  EXPECT_EQ(news(), "") << "another order";
  tickWith(0, 80);
  EXPECT_EQ(newsOf("state"),
            "\"state\",\"state\":\"holding\",\"reason\":\"B is working\",\"names\":[\"B\"],"
            "\"services\":[\"org.example.Sleep\"]\n");
}

TEST_F(HistoryRecorderTest, RecordsTheEndOfTheGracePeriod) {
  record();
  tick();
  tickFor(59);
  news();
  tickWith(0);
  EXPECT_EQ(news(), "\"state\",\"state\":\"idle\"\n");
}

TEST_F(HistoryRecorderTest, RecordsThatNobodyGrants) {
  record();
  tick();
  news();
  fakes.power.granted = false;
  tickWith(0);
  EXPECT_EQ(news(), "\"state\",\"state\":\"winding\",\"reason\":\"waiting for work to resume\"\n");
}

TEST_F(HistoryRecorderTest, RecordsABlock) {
  record();
  tick();
  news();
  fakes.powerSources.setBattery(10);
  tickWith(0);
  EXPECT_EQ(news(),
            "\"power\",\"onAC\":false,\"hasBattery\":true,\"percent\":10,\"lowPowerMode\":false\n"
            "\"state\",\"state\":\"blocked\",\"reason\":\"battery below 20%\"\n");
}

TEST_F(HistoryRecorderTest, RecordsTheChargeInStepsOfFive) {
  fakes.powerSources.setBattery(80);
  record();
  tick();
  news();
  fakes.powerSources.setBattery(76);
  tickWith(0);
  EXPECT_EQ(news(), "");
  fakes.powerSources.setBattery(75);
  tickWith(0);
  EXPECT_EQ(news(),
            "\"power\",\"onAC\":false,\"hasBattery\":true,\"percent\":75,\"lowPowerMode\":false\n");
  fakes.powerSources.setBatteryOnAC(75);
  tickWith(0);
  EXPECT_EQ(news(),
            "\"power\",\"onAC\":true,\"hasBattery\":true,\"percent\":75,\"lowPowerMode\":false\n");
}

TEST_F(HistoryRecorderTest, RecordsWhoElseAsks) {
  fakes.applications.add(500, "com.example.player", "Player");
  record();
  tick();
  news();
  fakes.assertions.hold(500, "PreventSystemSleep");
  tickWith(0);
  EXPECT_EQ(newsOf("asking"), "\"asking\",\"names\":[\"com.example.player\"]\n");
  tickWith(0);
  EXPECT_EQ(news(), "");
}

TEST_F(HistoryRecorderTest, RecordsWhatThoseWhoAskSayAboutThemselves) {
  const auto say = [this](const char* reason) {
    fakes.assertions.holders = {{500, {{"PreventSystemSleep", 255, reason, "Backup tool"}}}};
  };
  fakes.applications.add(500, std::nullopt, "inhibit");
  record();
  say("Nightly, 1 %");
  tick();
  tickWith(0);
  EXPECT_EQ(newsOf("asking"),
            "\"asking\",\"names\":[\"inhibit\"],\"words\":[\"Backup tool: Nightly, 1 %\"]\n");
  for (int number = 2; number < 62; ++number) {
    say(("Nightly, " + std::to_string(number) + " %").c_str());
    tickWith(0);
  }
  const std::string news = newsOf("asking");
  EXPECT_EQ(std::ranges::count(news, '\n'), 2) << "once a minute: " << news;
}

TEST_F(HistoryRecorderTest, RecordsTheLidWhereThereIsOne) {
  record();
  tick();
  news();
  fakes.powerSources.lidClosed = false;
  tickWith(0);
  EXPECT_EQ(news(), "") << "an open lid is no news";
  fakes.powerSources.lidClosed = true;
  tickWith(0);
  EXPECT_EQ(news(), "\"lid\",\"closed\":true\n");
  fakes.powerSources.lidClosed = false;
  tickWith(0);
  EXPECT_EQ(news(), "\"lid\",\"closed\":false\n");
}

TEST_F(HistoryRecorderTest, RecordsTheLockOfTheLid) {
  fakes.useLidSwitch();
  record();
  tick();
  news();
  fakes.lidSwitch.hold();
  tickWith(0);
  EXPECT_EQ(news(), "\"lidHold\",\"held\":true\n");
  fakes.lidSwitch.release();
  tickWith(0);
  EXPECT_EQ(news(), "\"lidHold\",\"held\":false\n");
}

TEST_F(HistoryRecorderTest, RecordsAPauseAsTheEndOfAllWork) {
  record();
  tick();
  for (int count = 0; count < 3; ++count)
    tickWith(80);
  news();
  engine.setPaused(true);
  EXPECT_EQ(news(),
            "\"workEnded\",\"key\":\"A\",\"peak\":[80.0,0.0,0.0],\"mean\":[80.0,0.0,0.0]\n"
            "\"state\",\"state\":\"paused\"\n");
  fakes.clock.advance(10min);
  engine.setPaused(false);
  EXPECT_EQ(news(),
            "\"state\",\"state\":\"idle\"\n"
            "\"state\",\"state\":\"winding\",\"reason\":\"waiting for work to resume\","
            "\"services\":[\"org.example.Sleep\"]\n");
}

TEST_F(HistoryRecorderTest, RecordsSleepAndTellsEverythingAfreshAfterIt) {
  record();
  tick();
  for (int count = 0; count < 3; ++count)
    tickWith(80);
  news();
  fakes.sleepNotifications.tellWillSleep();
  fakes.mainLoop.runPosted();
  EXPECT_EQ(news(),
            "\"workEnded\",\"key\":\"A\",\"peak\":[80.0,0.0,0.0],\"mean\":[80.0,0.0,0.0]\n"
            "\"slept\"\n");
  tickWith(80);
  EXPECT_EQ(news(), "") << "a tick between the two";
  fakes.clock.advance(5h);
  fakes.sleepNotifications.tellDidWake();
  fakes.mainLoop.runPosted();
  tickWith(0);
  EXPECT_EQ(news(),
            "\"woke\"\n"
            "\"state\",\"state\":\"winding\",\"reason\":\"waiting for work to resume\","
            "\"services\":[\"org.example.Sleep\"]\n");
}

TEST_F(HistoryRecorderTest, TakesTicksThatGoOnForAWakeThatNobodyTold) {
  record();
  tick();
  fakes.sleepNotifications.tellWillSleep();
  fakes.mainLoop.runPosted();
  news();
  tickFor(4);
  EXPECT_EQ(news(), "");
  tickWith(0);
  EXPECT_EQ(newsOf("woke"), "\"woke\"\n");
}

TEST_F(HistoryRecorderTest, TakesALongGapBetweenTwoTicksForSleepIfTheMachineSlept) {
  record();
  tick();
  tickWith(0);
  const auto lastTick = log.events.back().moment + 2s;
  news();
  fakes.clock.advanceAsleep(2h);
  tick();
  ASSERT_EQ(log.events.size(), told + 3);
  EXPECT_TRUE(std::holds_alternative<HistoryEvent::FellAsleep>(log.events[told].what));
  EXPECT_EQ(log.events[told].moment, lastTick);
  EXPECT_TRUE(std::holds_alternative<HistoryEvent::WokeUp>(log.events[told + 1].what));
  EXPECT_EQ(log.events[told + 1].moment, lastTick + 2h);
}

TEST_F(HistoryRecorderTest, DoesNotTakeAProgramThatWasStoppedForAMachineThatSlept) {
  record();
  tick();
  // Sleep that was told of before does not count for the gap.
  fakes.sleepNotifications.tellWillSleep();
  fakes.mainLoop.runPosted();
  fakes.clock.advanceAsleep(8h);
  fakes.sleepNotifications.tellDidWake();
  fakes.mainLoop.runPosted();
  tick();
  news();
  fakes.clock.advance(2h);
  tick();
  EXPECT_EQ(newsOf("slept"), "");
  EXPECT_EQ(newsOf("woke"), "");
}

TEST_F(HistoryRecorderTest, RecordsChangedSettingsWithinAMinute) {
  record();
  tick();
  news();
  fakes.defaults.stored["graceSeconds"] = std::int64_t{600};
  fakes.defaults.stored["ignoredApps"] = std::vector<std::string>{"a", "b"};
  fakes.defaults.stored["keepScreenOn"] = true;
  tickFor(28);
  EXPECT_EQ(news(), "");
  tickWith(0);
  EXPECT_EQ(newsOf("setting"),
            "\"setting\",\"key\":\"graceSeconds\",\"from\":\"120\",\"to\":\"600\"\n"
            "\"setting\",\"key\":\"ignoredApps\",\"from\":\"\",\"to\":\"a, b\"\n"
            "\"setting\",\"key\":\"keepScreenOn\",\"from\":\"false\",\"to\":\"true\"\n");
  tickFor(30);
  EXPECT_EQ(newsOf("setting"), "");
}

TEST_F(HistoryRecorderTest, NotesWithinAMinuteThatTheClockWasSet) {
  fakes.defaults.stored["graceSeconds"] = std::int64_t{3'600};
  record();
  tick();
  news();
  fakes.clock.stepWallTime(-5h);
  tickFor(29);
  EXPECT_EQ(news(), "\"clockSet\"\n");
  fakes.clock.stepWallTime(0.9s);
  tickFor(30);
  EXPECT_EQ(news(), "") << "no more than the clocks may run apart";
  fakes.clock.stepWallTime(1s);
  tickFor(30);
  EXPECT_EQ(news(), "\"clockSet\"\n");
  const History history{log.events, std::nullopt, true, fakes.clock.wallTime()};
  const HistoryTimeline timeline = timelineOf(history, history.now - 24h, history.now + 24h);
  EXPECT_EQ(timeline.holds.at(0).span.length(), 2s * 89);
}

TEST_F(HistoryRecorderTest, NotesDuringAPauseThatTheClockWasSet) {
  record();
  tick();
  engine.setPaused(true);
  news();
  fakes.clock.stepWallTime(3h);
  fakes.mainLoop.fireTimers();
  EXPECT_EQ(news(), "\"clockSet\"\n");
}

TEST_F(HistoryRecorderTest, LeavesATraceOnceAMinuteWhileItHolds) {
  fakes.defaults.stored["graceSeconds"] = std::int64_t{300};
  record();
  tick();
  tickFor(29);
  EXPECT_EQ(log.refreshed, 1);
  tickFor(30);
  EXPECT_EQ(log.refreshed, 2);
  tickFor(91);
  EXPECT_FALSE(engine.isHolding());
  const int before = log.refreshed;
  tickFor(30 * 6);
  EXPECT_EQ(log.refreshed, before);
}

TEST_F(HistoryRecorderTest, LeavesATraceEveryTenMinutesWhileItDoesNotHold) {
  fakes.powerSources.setBattery(10);
  record();
  tick();
  tickFor(30 * 10 - 2);
  EXPECT_EQ(log.refreshed, 0);
  tickWith(0);
  EXPECT_EQ(log.refreshed, 1);
  tickFor(30 * 10 - 1);
  EXPECT_EQ(log.refreshed, 1);
  tickWith(0);
  EXPECT_EQ(log.refreshed, 2);
}

TEST_F(HistoryRecorderTest, LeavesATraceDuringAPauseAndHasATimerOnlyThen) {
  record();
  tick();
  EXPECT_TRUE(fakes.mainLoop.timers.empty());
  engine.setPaused(true);
  const auto timer = fakes.mainLoop.timers.back();
  EXPECT_EQ(timer->interval, 10min);
  news();
  fakes.mainLoop.fireTimers();
  fakes.mainLoop.fireTimers();
  EXPECT_EQ(log.refreshed, 2);
  EXPECT_EQ(news(), "") << "the pause is no news";
  engine.setPaused(false);
  EXPECT_FALSE(timer->valid);
  engine.setPaused(true);
  recorder->stop();
  for (const auto& each : fakes.mainLoop.timers)
    EXPECT_FALSE(each->valid);
}

TEST_F(HistoryRecorderTest, FollowsTheSwitchOfTheHistoryDuringAPause) {
  record();
  tick();
  engine.setPaused(true);
  fakes.defaults.stored["history.enabled"] = false;
  fakes.mainLoop.fireTimers();
  EXPECT_TRUE(std::holds_alternative<HistoryEvent::Stopped>(log.events.back().what));
  EXPECT_EQ(log.refreshed, 0);
  news();
  fakes.mainLoop.fireTimers();
  EXPECT_EQ(news(), "");
  fakes.defaults.stored["history.enabled"] = true;
  fakes.mainLoop.fireTimers();
  EXPECT_EQ(news(),
            "\"started\",\"version\":\"0.1.0\"\n"
            "\"state\",\"state\":\"paused\"\n");
}

TEST_F(HistoryRecorderTest, KnowsAfterACrashToTenMinutesHowLongItIdled) {
  record();
  tick();
  const auto start = log.events.front().at;
  std::optional<tidewell::WallTime> trace;
  for (int count = 0; count < 30 * 25; ++count) {
    const int before = log.refreshed;
    tickWith(0);
    if (log.refreshed != before) trace = fakes.clock.wallTime();
  }
  const History history{log.events, trace, false, fakes.clock.wallTime() + 5h};
  const HistoryTimeline timeline = timelineOf(history, start, start + 24h);
  EXPECT_LE(fakes.clock.wallTime() - timeline.runs.at(0).span.to, 10min);
}

TEST_F(HistoryRecorderTest, RecordsAnOrderlyEndAndNothingAfterIt) {
  record();
  tick();
  for (int count = 0; count < 3; ++count)
    tickWith(80);
  news();
  recorder->stop();
  EXPECT_EQ(news(),
            "\"workEnded\",\"key\":\"A\",\"peak\":[80.0,0.0,0.0],\"mean\":[80.0,0.0,0.0]\n"
            "\"stopped\"\n");
  tickFor(40);
  recorder->stop();
  EXPECT_EQ(news(), "");
}

TEST_F(HistoryRecorderTest, RecordsNothingWhereNoHistoryIsWanted) {
  fakes.defaults.stored["history.enabled"] = false;
  record();
  tick();
  tickFor(40);
  fakes.sleepNotifications.tellWillSleep();
  fakes.mainLoop.runPosted();
  recorder->stop();
  EXPECT_TRUE(log.events.empty());
  EXPECT_EQ(log.refreshed, 0);
}

TEST_F(HistoryRecorderTest, FollowsTheSwitchOfTheHistory) {
  record();
  tick();
  fakes.defaults.stored["history.enabled"] = false;
  tickFor(30);
  news();
  EXPECT_TRUE(std::holds_alternative<HistoryEvent::Stopped>(log.events.back().what));
  tickFor(30);
  EXPECT_EQ(news(), "");
  const std::int64_t run = log.events.back().run;
  fakes.defaults.stored["history.enabled"] = true;
  tickFor(30);
  EXPECT_TRUE(news().starts_with("\"started\","));
  EXPECT_NE(log.events.back().run, run);
}

TEST_F(HistoryRecorderTest, GivesAllEventsOfARunTheSameNumber) {
  record();
  tick();
  tickFor(3);
  for (const HistoryEvent& event : log.events)
    EXPECT_EQ(event.run, 1'715'936'400'000);  // 09:00, 17 May 2024
}

TEST_F(HistoryRecorderTest, DoesNothingOnceItIsGone) {
  record();
  recorder.reset();
  news();
  tick();
  fakes.sleepNotifications.tellWillSleep();
  fakes.mainLoop.runPosted();
  EXPECT_EQ(news(), "");
}

TEST_F(HistoryRecorderTest, MakesAHistoryWhoseTimelineHasTheHold) {
  record();
  tick();
  tickFor(65);
  for (int count = 0; count < 12; ++count)
    tickWith(80);
  tickFor(70);
  recorder->stop();
  History history{log.events, std::nullopt, false, fakes.clock.wallTime()};
  const auto nine = log.events.front().at;
  const HistoryTimeline timeline = timelineOf(history, nine, nine + 24h);
  ASSERT_EQ(timeline.holds.size(), 2U);
  EXPECT_EQ(timeline.holds[0].span.length(), 120s) << "the grace period of the start";
  EXPECT_EQ(timeline.holds[1].span.from - nine, 136s) << "third busy tick after 65 quiet ones";
  EXPECT_EQ(timeline.holds[1].span.length(), 20s + 120s);
  ASSERT_EQ(timeline.works.size(), 1U);
  EXPECT_EQ(timeline.works[0].span.length(), 20s);
}

}  // namespace
}  // namespace staylit
