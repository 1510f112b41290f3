#include "Staylit/History/HistoryTimeline.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "Tests/Staylit/History/HistoryScript.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using SpanEnding = HistoryTimeline::Ending;
using EngineState = StatusReport::State;

double minute(tidewell::WallTime time) {
  return HistoryScript::Minutes(time - HistoryScript::at(0)).count();
}

/// "10-20", with "<" where it began earlier and the ending where that is not in order.
std::string written(const HistoryTimeline::Span& span) {
  const auto whole = [](tidewell::WallTime time) {
    return std::to_string(static_cast<int>(minute(time)));
  };
  std::string text = (span.beganEarlier ? "<" : "") + whole(span.from) + "-" + whole(span.to);
  if (span.ending == SpanEnding::open) text += " open";
  if (span.ending == SpanEnding::lost) text += " lost";
  if (span.ending == SpanEnding::later) text += ">";
  return text;
}

std::string written(const std::vector<HistoryTimeline::Span>& spans) {
  std::string text;
  for (const auto& span : spans)
    text += (text.empty() ? "" : ", ") + written(span);
  return text;
}

HistoryTimeline day(const HistoryScript& script) {
  return timelineOf(script.history, HistoryScript::at(0), HistoryScript::at(1'440));
}

class HistoryTimelineTest : public testing::Test {
 protected:
  HistoryScript script;
};

TEST_F(HistoryTimelineTest, IsEmptyWithoutEvents) {
  const HistoryTimeline timeline = day(script);
  EXPECT_TRUE(timeline.runs.empty());
  EXPECT_TRUE(timeline.holds.empty());
  EXPECT_EQ(minute(timeline.to), 1'440);
}

TEST_F(HistoryTimelineTest, HasARunWithItsVersion) {
  script.start(10).add(50, HistoryEvent::Stopped{});
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.runs.size(), 1U);
  EXPECT_EQ(written(timeline.runs[0].span), "10-50");
  EXPECT_EQ(timeline.runs[0].version, "0.1.0");
}

TEST_F(HistoryTimelineTest, HasAHoldWithEachChangeOfItsReason) {
  script.start(0).hold(10, "make").hold(20, "ffmpeg").wind(40).state(42, EngineState::idle);
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.holds.size(), 1U);
  EXPECT_EQ(written(timeline.holds[0].span), "10-42");
  const auto& parts = timeline.holds[0].parts;
  ASSERT_EQ(parts.size(), 3U);
  EXPECT_EQ(parts[0].reason, "make is working");
  EXPECT_EQ(minute(parts[0].to), 20);
  EXPECT_EQ(minute(parts[1].from), 20);
  EXPECT_EQ(parts[1].names, std::vector<std::string>{"ffmpeg"});
  EXPECT_EQ(parts[1].services, std::vector<std::string>{"logind"});
  EXPECT_EQ(parts[2].state, EngineState::winding);
  EXPECT_EQ(minute(parts[2].to), 42);
}

TEST_F(HistoryTimelineTest, KnowsAHoldThatNobodyGrants) {
  script.start(0).hold(10, "make", {}).hold(11, "make").state(20, EngineState::idle);
  const HistoryTimeline timeline = day(script);
  EXPECT_FALSE(timeline.holds.at(0).parts.at(0).isGranted());
  EXPECT_TRUE(timeline.holds.at(0).parts.at(1).isGranted());
}

TEST_F(HistoryTimelineTest, HasBlocksAndPauses) {
  script.start(0).state(10, EngineState::blocked, "battery below 20%");
  script.state(20, EngineState::blocked, "Low Power Mode").state(30, EngineState::paused);
  script.state(40, EngineState::idle);
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.blocks.size(), 2U);
  EXPECT_EQ(written(timeline.blocks[0].span), "10-20");
  EXPECT_EQ(timeline.blocks[0].reason, "battery below 20%");
  EXPECT_EQ(written(timeline.blocks[1].span), "20-30");
  EXPECT_EQ(written(timeline.pauses), "30-40");
}

TEST_F(HistoryTimelineTest, EndsTheHoldAndTheWorkWhenTheMachineSleeps) {
  script.start(0).hold(10, "make").begin(10, "make").add(10, HistoryEvent::AskingChanged{{"mpv"}});
  script.add(30, HistoryEvent::FellAsleep{}).add(400, HistoryEvent::WokeUp{}).wind(400);
  script.state(402, EngineState::idle).add(500, HistoryEvent::Stopped{});
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.holds.size(), 2U);
  EXPECT_EQ(written(timeline.holds[0].span), "10-30");
  EXPECT_EQ(written(timeline.holds[1].span), "400-402");
  EXPECT_EQ(written(timeline.works.at(0).span), "10-30");
  EXPECT_EQ(written(timeline.askings.at(0).span), "10-30");
  EXPECT_EQ(written(timeline.sleeps), "30-400");
}

TEST_F(HistoryTimelineTest, HasWorkWithItsFigures) {
  script.start(0).begin(10, "make", {100, 20, 3}).begin(15, "cc").finish(30, "make");
  script.finish(40, "cc").finish(50, "cc");
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.works.size(), 2U);
  EXPECT_EQ(written(timeline.works[0].span), "10-30");
  EXPECT_EQ(timeline.works[0].overForSeconds, 10);
  EXPECT_EQ(timeline.works[0].start, (WorkFigures{100, 20, 3}));
  EXPECT_EQ(timeline.works[0].peak, (WorkFigures{150, 0, 0}));
  EXPECT_EQ(timeline.works[0].mean, (WorkFigures{120, 0, 0}));
  EXPECT_EQ(written(timeline.works[1].span), "15-40");
}

TEST_F(HistoryTimelineTest, TellsHowMuchOfAWorkWasOnBattery) {
  script.start(0).battery(0, 90, true).begin(10, "make").battery(20, 90).battery(25, 85);
  script.battery(32, 85, true).battery(36, 85).finish(40, "make").add(60, HistoryEvent::Stopped{});
  const HistoryTimeline timeline = day(script);
  EXPECT_EQ(written(timeline.onBattery), "20-32, 36-60");
  EXPECT_EQ(timeline.works.at(0).onBattery, 16min);
  ASSERT_EQ(timeline.charges.size(), 5U);
  EXPECT_EQ(timeline.charges[2].power.percentage, 85);
  EXPECT_EQ(minute(timeline.charges[2].at), 25);
}

TEST_F(HistoryTimelineTest, HasEachProgramThatAsked) {
  script.start(0).add(10, HistoryEvent::AskingChanged{{"mpv", "vlc"}});
  script.add(20, HistoryEvent::AskingChanged{{"vlc"}}).add(30, HistoryEvent::AskingChanged{});
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.askings.size(), 2U);
  EXPECT_EQ(timeline.askings[0].name, "mpv");
  EXPECT_EQ(written(timeline.askings[0].span), "10-20");
  EXPECT_EQ(written(timeline.askings[1].span), "10-30");
}

TEST_F(HistoryTimelineTest, HasWhatEachProgramThatAskedSaidAboutItself) {
  script.start(0).add(10, HistoryEvent::AskingChanged{{"inhibit", "mpv"}, {"Backup", "Film"}});
  script.add(20, HistoryEvent::AskingChanged{{"inhibit", "mpv"}, {"Upload", "Film"}});
  script.add(30, HistoryEvent::AskingChanged{});
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.askings.size(), 3U);
  EXPECT_EQ(timeline.askings[0].words, "Backup");
  EXPECT_EQ(written(timeline.askings[0].span), "10-20");
  EXPECT_EQ(timeline.askings[1].words, "Film");
  EXPECT_EQ(written(timeline.askings[1].span), "10-30");
  EXPECT_EQ(timeline.askings[2].words, "Upload");
}

TEST_F(HistoryTimelineTest, HasTheLidAndItsLock) {
  script.start(0).add(5, HistoryEvent::LidHoldChanged{true}).add(10, HistoryEvent::LidMoved{true});
  script.add(20, HistoryEvent::LidMoved{false}).add(30, HistoryEvent::LidHoldChanged{false});
  const HistoryTimeline timeline = day(script);
  EXPECT_EQ(written(timeline.lidClosed), "10-20");
  EXPECT_EQ(written(timeline.lidHolds), "5-30");
}

TEST_F(HistoryTimelineTest, HasChangesOfSettings) {
  script.start(0).add(5, HistoryEvent::SettingChanged{"graceSeconds", "120", "60"});
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.settings.size(), 1U);
  EXPECT_EQ(minute(timeline.settings[0].at), 5);
  EXPECT_EQ(timeline.settings[0].to, "60");
}

TEST_F(HistoryTimelineTest, LeavesOpenWhatGoesOnNow) {
  script.history.isRunning = true;
  script.history.now = HistoryScript::at(100);
  script.start(0).hold(10, "make").begin(10, "make").battery(50, 60);
  const HistoryTimeline timeline = day(script);
  EXPECT_EQ(written(timeline.runs.at(0).span), "0-100 open");
  EXPECT_EQ(written(timeline.holds.at(0).span), "10-100 open");
  EXPECT_EQ(minute(timeline.holds.at(0).parts.at(0).to), 100);
  EXPECT_EQ(written(timeline.works.at(0).span), "10-100 open");
  EXPECT_EQ(timeline.works.at(0).peak, std::nullopt);
  EXPECT_EQ(written(timeline.onBattery), "50-100 open");
}

TEST_F(HistoryTimelineTest, EndsALostRunWhenItWasLastSeen) {
  script.history.lastSeen = HistoryScript::at(31);
  script.start(0).hold(10, "make");
  const HistoryTimeline timeline = day(script);
  EXPECT_EQ(written(timeline.runs.at(0).span), "0-31 lost");
  EXPECT_EQ(written(timeline.holds.at(0).span), "10-31 lost");
}

TEST_F(HistoryTimelineTest, KeepsTheLastReasonOfAHoldThatWasLostAtThatMoment) {
  script.start(0).wind(0).hold(10, "make").start(60);
  const auto parts = day(script).holds.at(0).parts;
  ASSERT_EQ(parts.size(), 2U);
  EXPECT_EQ(parts[1].reason, "make is working");
  EXPECT_EQ(minute(parts[1].from), 10);
  EXPECT_EQ(minute(parts[1].to), 10);
}

TEST_F(HistoryTimelineTest, LearnsFromTheNextStartWhenALostRunWasLastSeen) {
  script.start(0).hold(10, "make").start(60, HistoryScript::at(45));
  script.add(70, HistoryEvent::Stopped{});
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.runs.size(), 2U);
  EXPECT_EQ(written(timeline.runs[0].span), "0-45 lost");
  EXPECT_EQ(written(timeline.runs[1].span), "60-70");
  EXPECT_EQ(written(timeline.holds.at(0).span), "10-45 lost");
}

TEST_F(HistoryTimelineTest, BelievesNoTimeAfterTheNextStart) {
  script.start(0).hold(10, "make").start(60, HistoryScript::at(600));
  EXPECT_EQ(written(day(script).holds.at(0).span), "10-60 lost");
}

TEST_F(HistoryTimelineTest, EndsALostRunWithItsLastEventWhereNothingElseIsKnown) {
  script.start(0).hold(10, "make").start(60);
  EXPECT_EQ(written(day(script).holds.at(0).span), "10-10 lost");
}

TEST_F(HistoryTimelineTest, SeparatesTwoProgramsThatRunAtOnce) {
  HistoryScript other;
  other.start(0).start(5).hold(15, "ffmpeg").state(25, EngineState::idle);
  other.add(40, HistoryEvent::Stopped{});
  script.start(0).hold(10, "make").state(20, EngineState::idle).add(30, HistoryEvent::Stopped{});
  auto& events = script.history.events;
  events.insert(events.begin() + 2, other.history.events.begin() + 1, other.history.events.end());
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.runs.size(), 2U);
  EXPECT_EQ(written(timeline.runs[0].span), "0-30");
  EXPECT_EQ(written(timeline.runs[1].span), "5-40");
  ASSERT_EQ(timeline.holds.size(), 2U);
  EXPECT_EQ(written(timeline.holds[0].span), "10-20");
  EXPECT_EQ(written(timeline.holds[1].span), "15-25");
}

TEST_F(HistoryTimelineTest, MeasuresByTheClockThatNobodySets) {
  script.start(0).hold(10, "make");
  script.wallTimeError = 5h;
  script.state(30, EngineState::idle);
  script.wallTimeError = 0h;
  script.hold(50, "make").state(70, EngineState::idle);
  const HistoryTimeline timeline = day(script);
  ASSERT_EQ(timeline.holds.size(), 2U);
  EXPECT_EQ(written(timeline.holds[0].span), "10-30");
  EXPECT_EQ(written(timeline.holds[1].span), "50-70");
}

TEST_F(HistoryTimelineTest, PlacesARunByTheClockThatWasOnTheWallAtItsEnd) {
  script.wallTimeError = -500h;
  script.start(0).hold(10, "make");
  script.wallTimeError = 0h;
  script.state(30, EngineState::idle);
  EXPECT_EQ(written(day(script).holds.at(0).span), "10-30");
}

TEST_F(HistoryTimelineTest, MeasuresWhatIsOpenByTheClockThatWasSet) {
  script.history.isRunning = true;
  script.wallTimeError = -5h;
  script.start(0).hold(10, "make");
  script.wallTimeError = 0h;
  script.add(40, HistoryEvent::ClockSet{});
  script.history.now = HistoryScript::at(50);
  const HistoryTimeline timeline = day(script);
  EXPECT_EQ(written(timeline.holds.at(0).span), "10-50 open");
  EXPECT_EQ(minute(timeline.clockSets.at(0).at), 40);
}

TEST_F(HistoryTimelineTest, CutsWhatReachesBeyondTheRange) {
  script.start(0).hold(10, "make").begin(10, "make").battery(5, 80);
  script.wind(50).finish(50, "make").state(52, EngineState::idle).add(60, HistoryEvent::Stopped{});
  const auto timeline = timelineOf(script.history, HistoryScript::at(20), HistoryScript::at(40));
  EXPECT_EQ(written(timeline.runs.at(0).span), "<20-40>");
  EXPECT_EQ(written(timeline.holds.at(0).span), "<20-40>");
  ASSERT_EQ(timeline.holds.at(0).parts.size(), 1U);
  EXPECT_EQ(minute(timeline.holds[0].parts[0].from), 20);
  EXPECT_EQ(minute(timeline.holds[0].parts[0].to), 40);
  EXPECT_EQ(written(timeline.works.at(0).span), "<20-40>");
  EXPECT_EQ(timeline.works.at(0).onBattery, 20min);
  ASSERT_EQ(timeline.charges.size(), 1U);
  EXPECT_EQ(minute(timeline.charges[0].at), 20);
}

TEST_F(HistoryTimelineTest, LeavesOutWhatEndsWhereTheRangeBegins) {
  script.start(0)
      .hold(10, "make")
      .state(20, EngineState::idle)
      .hold(40, "make")
      .state(50, EngineState::idle);
  script.add(60, HistoryEvent::Stopped{});
  const auto timeline = timelineOf(script.history, HistoryScript::at(20), HistoryScript::at(40));
  EXPECT_TRUE(timeline.holds.empty());
}

TEST_F(HistoryTimelineTest, ForgetsTheChargeOfARunThatEndedBefore) {
  script.start(0).battery(5, 80).add(10, HistoryEvent::Stopped{});
  const auto timeline = timelineOf(script.history, HistoryScript::at(20), HistoryScript::at(40));
  EXPECT_TRUE(timeline.charges.empty());
  EXPECT_TRUE(timeline.runs.empty());
}

TEST_F(HistoryTimelineTest, ReadsARunWhoseBeginningIsGone) {
  script.hold(10, "make").state(30, EngineState::idle).add(40, HistoryEvent::Stopped{});
  const HistoryTimeline timeline = day(script);
  EXPECT_EQ(written(timeline.runs.at(0).span), "10-40");
  EXPECT_EQ(timeline.runs.at(0).version, "");
  EXPECT_EQ(written(timeline.holds.at(0).span), "10-30");
}

}  // namespace
}  // namespace staylit
