#include "Staylit/History/HistoryTexts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "Staylit/History/HistoryBar.h"
#include "Tests/Staylit/History/HistoryScript.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using EngineState = StatusReport::State;

class HistoryTextsTest : public testing::Test {
 protected:
  void SetUp() override { useZone("UTC0"); }
  void TearDown() override { useZone("UTC0"); }

  static void useZone(const char* zone) {
    ASSERT_EQ(setenv("TZ", zone, 1), 0);
    tzset();
  }

  [[nodiscard]] HistoryTimeline day() const {
    return timelineOf(script.history, HistoryScript::at(0), HistoryScript::at(1'440));
  }
  [[nodiscard]] std::string summary() const {
    return HistoryTexts::summary(day(), script.history.now);
  }
  [[nodiscard]] std::vector<std::string> lines(HistoryTexts::Style style = {true, false}) const {
    return HistoryTexts::lines(script.history, HistoryScript::at(0), HistoryScript::at(1'440),
                               style);
  }
  /// The lines below the bar of the only day.
  [[nodiscard]] std::string entries() const {
    const auto all = lines();
    std::string text;
    int blankLines = 0;
    for (const std::string& line : all) {
      if (blankLines == 3) text += line + "\n";
      if (line.empty()) ++blankLines;
    }
    return text;
  }

  HistoryScript script;  ///< The day ends when the history is read.
};

TEST_F(HistoryTextsTest, AnswersInASentence) {
  script.start(0).hold(10, "ffmpeg").begin(10, "ffmpeg").finish(170, "ffmpeg").begin(170, "make");
  script.finish(200, "make").wind(200).state(202, EngineState::idle);
  script.add(300, HistoryEvent::FellAsleep{}).add(465, HistoryEvent::WokeUp{});
  script.add(1'440, HistoryEvent::Stopped{});
  EXPECT_EQ(summary(),
            "Held for 3 h 12 min yesterday: ffmpeg 2 h 40 min, make 30 min 0 s. "
            "Asleep from 05:00 until 07:45.");
}

TEST_F(HistoryTextsTest, CallsTodayAndYesterdayByTheirNames) {
  script.start(0).add(600, HistoryEvent::Stopped{});
  script.history.now = HistoryScript::at(600);
  EXPECT_EQ(summary(), "Not held today.");
  script.history.now = HistoryScript::at(3'000);
  EXPECT_EQ(summary(), "Not held on 2026-11-22. Staylit did not run for 14 h 0 min.");
  script.history.now = HistoryScript::at(1'500);
  EXPECT_EQ(summary(), "Not held yesterday. Staylit did not run for 14 h 0 min.");
}

TEST_F(HistoryTextsTest, NamesARangeThatIsNoDay) {
  script.start(0).add(1'440, HistoryEvent::Stopped{});
  const auto part = timelineOf(script.history, HistoryScript::at(90), HistoryScript::at(150));
  EXPECT_EQ(HistoryTexts::summary(part, HistoryScript::at(2'000)),
            "Not held from 2026-11-22 01:30 to 2026-11-22 02:30.");
  const auto days = timelineOf(script.history, HistoryScript::at(-1'440), HistoryScript::at(1'440));
  EXPECT_EQ(HistoryTexts::summary(days, HistoryScript::at(2'000)),
            "Not held from 2026-11-21 to 2026-11-22. Staylit did not run for 1 d 0 h.");
}

TEST_F(HistoryTextsTest, TellsOfHoldsThatNobodyGrantedAndOfBlocksAndPauses) {
  script.start(0).hold(10, "make", {}).state(20, EngineState::blocked, "battery below 20%");
  script.state(50, EngineState::paused).state(60, EngineState::idle);
  script.add(1'440, HistoryEvent::Stopped{});
  EXPECT_EQ(summary(),
            "Not held yesterday. For 10 min 0 s no service granted the hold. "
            "Forbidden to hold for 30 min 0 s: battery below 20%. Paused for 10 min 0 s.");
}

TEST_F(HistoryTextsTest, NamesNoMoreThanFour) {
  script.start(0).hold(0, "a");
  for (const char* name : {"a", "b", "c", "d", "e", "f"})
    script.begin(0, name);
  script.add(1'440, HistoryEvent::Stopped{});
  EXPECT_EQ(summary(),
            "Held for 1 d 0 h yesterday: a 1 d 0 h, b 1 d 0 h, c 1 d 0 h, d 1 d 0 h and 2 "
            "more.");
}

TEST_F(HistoryTextsTest, SaysThatAHoldWasForWhoAskedOrForNothing) {
  script.start(0).wind(0).state(2, EngineState::idle).add(1'440, HistoryEvent::Stopped{});
  EXPECT_EQ(summary(), "Held for 2 min 0 s yesterday: no work, only the wait for it.");
  HistoryScript asked;
  asked.start(0).add(0, HistoryEvent::AskingChanged{{"mpv"}}).hold(0, "mpv");
  asked.state(60, EngineState::idle).add(60, HistoryEvent::AskingChanged{});
  asked.add(1'440, HistoryEvent::Stopped{});
  script = asked;
  EXPECT_EQ(summary(), "Held for 1 h 0 min yesterday: mpv, which asked, 1 h 0 min.");
}

TEST_F(HistoryTextsTest, SaysTheOwnWordsOfWhoAsked) {
  script.start(1).add(10, HistoryEvent::AskingChanged{{"inhibit"}, {"Backup tool: Nightly"}});
  script.add(20, HistoryEvent::Stopped{});
  EXPECT_EQ(entries(),
            "00:01        Staylit 0.1.0 started\n"
            "00:10–00:20  asked    10 min 0 s  inhibit (Backup tool: Nightly)\n"
            "00:20        Staylit ended\n");
}

TEST_F(HistoryTextsTest, HasALineForEachThing) {
  script.start(1).battery(1, 90, true).hold(10, "ffmpeg").begin(10, "ffmpeg");
  script.battery(100, 80).battery(150, 60).finish(170, "ffmpeg").wind(170);
  script.battery(171, 59, true).state(172, EngineState::idle);
  script.add(180, HistoryEvent::SettingChanged{"ignoredApps", "", "vlc"});
  script.add(190, HistoryEvent::ClockSet{});
  script.add(300, HistoryEvent::FellAsleep{}).add(465, HistoryEvent::WokeUp{});
  script.add(500, HistoryEvent::Stopped{});
  EXPECT_EQ(entries(),
            "00:01        Staylit 0.1.0 started\n"
            "00:10–02:52  held     2 h 42 min  ffmpeg is working; waiting for work to resume\n"
            "00:10–02:50  work     2 h 40 min  ffmpeg: mean 120% CPU, peak 150% CPU; 1 h 10 min on "
            "battery\n"
            "01:40–02:51  battery  1 h 11 min  80% to 59%\n"
            "03:00        setting ignoredApps: nothing became vlc\n"
            "03:10        the clock was set\n"
            "05:00–07:45  asleep   2 h 45 min\n"
            "08:20        Staylit ended\n");
}

TEST_F(HistoryTextsTest, SaysHowARunEndedThatWasLost) {
  script.start(1).hold(10, "ffmpeg").begin(10, "ffmpeg", {100, 20, 0});
  script.history.lastSeen = HistoryScript::at(40);
  EXPECT_EQ(
      entries(),
      "00:01        Staylit 0.1.0 started\n"
      "00:10–00:40  held     30 min 0 s  ffmpeg is working; then Staylit was killed, or the "
      "machine lost its power\n"
      "00:10–00:40  work     30 min 0 s  ffmpeg: 100% CPU 20 KB/s disk at first; then Staylit "
      "was killed, or the machine lost its power\n");
}

TEST_F(HistoryTextsTest, SaysThatSomethingGoesOn) {
  script.history.isRunning = true;
  script.history.now = HistoryScript::at(40);
  script.start(1).hold(10, "ffmpeg");
  EXPECT_EQ(entries(),
            "00:01        Staylit 0.1.0 started\n"
            "00:10–now    held     30 min 0 s  ffmpeg is working\n");
}

TEST_F(HistoryTextsTest, DividesWhatLastsOverMidnight) {
  script.start(0).hold(1'400, "make").state(1'500, EngineState::idle);
  script.add(1'600, HistoryEvent::Stopped{});
  script.history.now = HistoryScript::at(2'880);
  const auto all =
      HistoryTexts::lines(script.history, HistoryScript::at(0), HistoryScript::at(2'880), {});
  const auto find = [&all](const std::string& line) {
    return std::find(all.begin(), all.end(), line) - all.begin();
  };
  const auto end = std::ssize(all);
  EXPECT_LT(find("Sunday, 22 November 2026"),
            find("23:20-24:00  held     40 min 0 s  make is working"));
  EXPECT_LT(find("Monday, 23 November 2026"),
            find("00:00-01:00  held     1 h 0 min   make is working"));
  EXPECT_LT(find("00:00-01:00  held     1 h 0 min   make is working"), end);
}

TEST_F(HistoryTextsTest, TellsOnADayOfThatDayOnly) {
  script.start(0).battery(1'200, 90).begin(1'380, "ffmpeg").hold(1'380, "ffmpeg");
  script.battery(1'400, 80).battery(1'560, 40).finish(1'620, "ffmpeg").hold(1'620, "cc", {});
  script.state(1'740, EngineState::idle).add(1'800, HistoryEvent::Stopped{});
  script.history.now = HistoryScript::at(2'880);
  const auto all =
      HistoryTexts::lines(script.history, HistoryScript::at(600), HistoryScript::at(2'880), {});
  const auto has = [&all](const std::string& line) {
    return std::find(all.begin(), all.end(), line) != all.end();
  };
  const std::string figures = "ffmpeg: mean 120% CPU, peak 150% CPU; ";
  EXPECT_TRUE(has("20:00-24:00  battery  4 h 0 min   90% to 80%"));
  EXPECT_TRUE(has("23:00-24:00  held     1 h 0 min   ffmpeg is working"));
  EXPECT_TRUE(has("23:00-24:00  work     1 h 0 min   " + figures + "1 h 0 min on battery"));
  EXPECT_TRUE(has("00:00-03:00  work     3 h 0 min   " + figures + "3 h 0 min on battery"));
  EXPECT_TRUE(has("00:00-06:00  battery  6 h 0 min   80% to 40%"));
  EXPECT_TRUE(
      has("00:00-05:00  held     5 h 0 min   ffmpeg is working; cc is working (for a "
          "time, no service granted it)"));
}

TEST_F(HistoryTextsTest, BeginsAndEndsWhereTheRangeDoes) {
  script.start(0).hold(60, "make").state(2'000, EngineState::idle);
  script.add(2'100, HistoryEvent::Stopped{});
  script.history.now = HistoryScript::at(2'880);
  const auto all =
      HistoryTexts::lines(script.history, HistoryScript::at(120), HistoryScript::at(1'500), {});
  const auto count = [&all](const std::string& line) {
    return std::count(all.begin(), all.end(), line);
  };
  EXPECT_EQ(count("02:00-24:00  held     22 h 0 min  make is working"), 1);
  EXPECT_EQ(count("00:00-01:00  held     1 h 0 min   make is working"), 1);
}

TEST_F(HistoryTextsTest, SaysThatATimeIsStillToCome) {
  script.start(0).hold(10, "make");
  script.history.isRunning = true;
  script.history.now = HistoryScript::at(900);
  const auto all =
      HistoryTexts::lines(script.history, HistoryScript::at(1'320), HistoryScript::at(1'440), {});
  EXPECT_EQ(all, std::vector<std::string>{"The time from 2026-11-22 22:00 on is still to come."});
}

TEST_F(HistoryTextsTest, DrawsTheDay) {
  script.start(0).hold(60, "make").state(190, EngineState::idle);
  script.add(720, HistoryEvent::FellAsleep{}).add(1'085, HistoryEvent::WokeUp{});
  script.add(1'439, HistoryEvent::Stopped{});
  const auto drawn = lines();
  EXPECT_EQ(drawn[4], "        0        3        6        9        12       15       18       21");
  EXPECT_EQ(drawn[5], "held       ██████▄");
  EXPECT_EQ(drawn[6], "asleep                                      ██████████████████▂");
  EXPECT_EQ(lines({false, false})[5], "held       ######:");
  EXPECT_EQ(lines({true, true})[5], "held    \x1B[32m   ██████▄\x1B[0m");
}

TEST_F(HistoryTextsTest, DrawsTheShortestHold) {
  script.start(0).hold(60, "make").state(60.01, EngineState::idle);
  script.add(1'439, HistoryEvent::Stopped{});
  EXPECT_EQ(lines()[5], "held       ▁");
}

TEST_F(HistoryTextsTest, DrawsADayOf25HoursWithItsHoursInTheirPlaces) {
  useZone("CET-1CEST,M3.5.0,M10.5.0/3");
  const auto noon = std::chrono::sys_days(std::chrono::year(2026) / 10 / 25) + 12h;
  const auto bar = historyBar(HistoryTimeline(), localDayOf(noon), {true, false});
  EXPECT_EQ(bar[0], "        0          3        6       9        12       15      18       21");
}

TEST_F(HistoryTextsTest, KeepsTheBarWithin80Characters) {
  script.start(0).hold(0, "make").add(1'440, HistoryEvent::Stopped{});
  for (const char* zone : {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3"}) {
    useZone(zone);
    const auto bar = historyBar(day(), localDayOf(HistoryScript::at(600)), {false, false});
    for (const std::string& line : bar)
      EXPECT_LE(line.size(), 80U) << line;
  }
}

}  // namespace
}  // namespace staylit
