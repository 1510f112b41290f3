#include "Staylit/History/HistorySums.h"

#include <gtest/gtest.h>

#include <chrono>

#include "Tests/Staylit/History/HistoryScript.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;

HistorySums sumsOfDay(const HistoryScript& script) {
  return sumsOf(timelineOf(script.history, HistoryScript::at(0), HistoryScript::at(1'440)));
}

TEST(HistorySums, AreNothingWithoutEvents) {
  const HistorySums sums = sumsOfDay(HistoryScript());
  EXPECT_EQ(sums.held, 0min);
  EXPECT_TRUE(sums.works.empty());
}

TEST(HistorySums, AddUpEachKind) {
  HistoryScript script;
  script.start(0).battery(0, 90, true).hold(10, "make").battery(15, 90).wind(30);
  script.state(32, StatusReport::State::idle).hold(50, "ffmpeg", {}).hold(53, "ffmpeg");
  script.state(60, StatusReport::State::blocked, "battery below 20%");
  script.state(70, StatusReport::State::paused).state(75, StatusReport::State::idle);
  script.add(80, HistoryEvent::FellAsleep{}).add(200, HistoryEvent::WokeUp{});
  script.add(210, HistoryEvent::Stopped{});
  const HistorySums sums = sumsOfDay(script);
  EXPECT_EQ(sums.held, 29min);
  EXPECT_EQ(sums.heldOnBattery, 24min);
  EXPECT_EQ(sums.notGranted, 3min);
  EXPECT_EQ(sums.blocked, 10min);
  EXPECT_EQ(sums.paused, 5min);
  EXPECT_EQ(sums.asleep, 120min);
  EXPECT_EQ(sums.running, 210min);
}

TEST(HistorySums, AddUpEachApplicationTheLongestFirst) {
  HistoryScript script;
  script.start(0).battery(0, 90, true).begin(10, "make").finish(20, "make").begin(20, "ffmpeg");
  script.battery(40, 90).finish(50, "ffmpeg").begin(60, "make", {700, 0, 0});
  script.add(65, HistoryEvent::Stopped{});
  const HistorySums sums = sumsOfDay(script);
  ASSERT_EQ(sums.works.size(), 2U);
  EXPECT_EQ(sums.works[0].display, "ffmpeg");
  EXPECT_EQ(sums.works[0].length, 30min);
  EXPECT_EQ(sums.works[0].onBattery, 10min);
  EXPECT_EQ(sums.works[0].peak.cpuPercent, 150);
  EXPECT_EQ(sums.works[1].display, "make");
  EXPECT_EQ(sums.works[1].length, 15min);
  EXPECT_EQ(sums.works[1].peak.cpuPercent, 700);
}

TEST(HistorySums, AddUpWhoAsked) {
  HistoryScript script;
  script.start(0).add(10, HistoryEvent::AskingChanged{{"mpv", "vlc"}});
  script.add(20, HistoryEvent::AskingChanged{{"vlc"}}).add(25, HistoryEvent::AskingChanged{});
  script.add(30, HistoryEvent::AskingChanged{{"mpv"}}).add(31, HistoryEvent::Stopped{});
  const HistorySums sums = sumsOfDay(script);
  ASSERT_EQ(sums.askings.size(), 2U);
  EXPECT_EQ(sums.askings[0].name, "vlc");
  EXPECT_EQ(sums.askings[0].length, 15min);
  EXPECT_EQ(sums.askings[1].length, 11min);
}

TEST(HistorySums, CountOnceWhatTwoProgramsRecorded) {
  HistoryScript script;
  script.start(0).hold(10, "make").begin(10, "make").add(30, HistoryEvent::Stopped{});
  script.start(0).hold(20, "make").begin(20, "make").add(50, HistoryEvent::Stopped{});
  const HistorySums sums = sumsOfDay(script);
  EXPECT_EQ(sums.held, 40min);
  EXPECT_EQ(sums.works.at(0).length, 40min);
  EXPECT_EQ(sums.running, 50min);
}

}  // namespace
}  // namespace staylit
