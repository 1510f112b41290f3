#include "Staylit/Replay/Replay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/JsonValue.h"
#include "Staylit/Replay/ReplayReport.h"
#include "Staylit/Replay/TapeCopy.h"
#include "Staylit/Replay/TapeRecorder.h"
#include "Staylit/StaylitEngine.h"
#include "Tests/Fakes/ComposedPorts.h"
#include "Tests/Staylit/Replay/MemoryTape.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using tidewell::Seconds;
using Integer = std::int64_t;
using Texts = std::vector<std::string>;
using Names = TapeRecorder::Names;

/// An engine over fakes, and a tape that records it. The real grace period is 30 s and the sustain
/// time 10 s.
class ReplayTest : public testing::Test {
 protected:
  ReplayTest() { fakes.defaults.stored["graceSeconds"] = Integer{30}; }

  void start(Names names = Names::asTheyAre) {
    engine = std::make_unique<StaylitEngine>(fakes.ports);
    recorder =
        std::make_unique<TapeRecorder>(*engine, fakes.ports, tape, names, "Staylit of this test");
    engine->start();
  }

  /// Each of the workers uses its share of a core in these seconds. Ticks are a little late and
  /// take a little time, as they are and do.
  void pass(Seconds length) {
    for (Seconds gone{}; gone < length; gone += 2s) {
      fakes.clock.advance(2s + late());
      for (const auto& [pid, percent] : workers) {
        fakes.processes.at(pid).usage.userTime +=
            static_cast<std::uint64_t>(percent / 100 * 2 * 1e9);
      }
      fakes.mainLoop.fireTimers();
      fakes.mainLoop.runPosted();
      fakes.queues.runAll();
    }
  }

  void work(std::int32_t pid, const std::string& name, double percent) {
    fakes.processes.add(pid, "/opt/" + name);
    workers.emplace_back(pid, percent);
  }

  void end() {
    recorder.reset();
    engine.reset();
  }

  ReplayResult replayed(tidewell::PropertyDictionary settings = {}) {
    Replay replay(std::make_shared<tidewell::FakeText>(), std::move(settings));
    for (const std::string& file : tape.files)
      replay.play(file);
    return replay.finish();
  }

  /// The names of each stretch with a hold that would be, one after the other.
  static std::vector<Texts> heldFor(const ReplayResult& result) {
    std::vector<Texts> names;
    for (const ReplayStretch& stretch : result.stretches) {
      if (!stretch.would.isHeld) continue;
      if (names.empty() || names.back() != stretch.would.names)
        names.push_back(stretch.would.names);
    }
    return names;
  }

  /// What there was of holds, blocks, pauses and sleep, one after the other.
  static Texts spansOf(const HistoryTimeline& timeline) {
    std::multimap<tidewell::WallTime, std::string> spans;
    for (const auto& hold : timeline.holds) {
      for (const auto& part : hold.parts)
        spans.emplace(part.from, nameOf(part.state));
    }
    for (const auto& block : timeline.blocks)
      spans.emplace(block.span.from, "blocked");
    for (const auto& pause : timeline.pauses)
      spans.emplace(pause.from, "paused");
    for (const auto& sleep : timeline.sleeps)
      spans.emplace(sleep.from, "asleep");
    Texts names;
    for (const auto& [from, name] : spans)
      names.push_back(name);
    return names;
  }

  /// How long the history says that the machine was held.
  static double secondsHeld(const ReplayResult& result) {
    Seconds held{};
    for (const auto& hold : timelineOf(result.history, result.from, result.to).holds)
      held += hold.span.length();
    return held.count();
  }

  Seconds late() {
    ++lateness;
    return std::chrono::microseconds(lateness * 7919 % 1000);
  }

  tidewell::ComposedPorts fakes;
  std::vector<std::pair<std::int32_t, double>> workers;
  MemoryTape tape;
  std::unique_ptr<StaylitEngine> engine;
  std::unique_ptr<TapeRecorder> recorder;
  int lateness = 0;
};

TEST_F(ReplayTest, DecidesAtEachTickAsTheRecordedEngineDid) {
  start();
  pass(40s);
  work(10, "ffmpeg", 80);
  pass(30s);
  work(11, "tool", 90);
  pass(20s);
  workers.clear();
  pass(50s);
  end();
  const ReplayResult result = replayed();
  EXPECT_EQ(result.ticks, 71U);
  EXPECT_EQ(result.differingTicks, 0U);
  EXPECT_EQ(result.runs, 1U);
  EXPECT_EQ(result.program, "Staylit of this test");
  EXPECT_EQ(heldFor(result), (std::vector<Texts>{{}, {"ffmpeg"}, {"ffmpeg", "tool"}}));
}

TEST_F(ReplayTest, SeesDiskNetworkApplicationsAndWhoAsks) {
  start();
  fakes.processes.add(20, "/opt/viewer");
  fakes.applications.add(20, "org.example.Viewer", "Viewer");
  fakes.assertions.hold(20, "PreventUserIdleSystemSleep");
  pass(6s);
  fakes.assertions.holders.clear();
  fakes.processes.add(21, "/usr/bin/curl");
  for (int ticks = 1; ticks <= 10; ++ticks) {
    fakes.network.setTotals({{21, static_cast<std::uint64_t>(ticks) * 1'000'000}});
    fakes.processes.at(20).usage.diskBytesRead += ticks > 5 ? 3'000'000 : 0;
    pass(2s);
  }
  end();
  const ReplayResult result = replayed();
  EXPECT_EQ(result.differingTicks, 0U);
  const auto held = heldFor(result);
  ASSERT_GE(held.size(), 3U);
  EXPECT_EQ(held[1], Texts{"org.example.Viewer"}) << "who asks goes by its identifier";
  EXPECT_EQ(held[2], Texts{"curl / wget"});
}

TEST_F(ReplayTest, FollowsPausesSleepsThePowerAndSettings) {
  start();
  work(10, "ffmpeg", 80);
  pass(20s);
  engine->setPaused(true);
  pass(10s);
  engine->setPaused(false);
  pass(20s);
  fakes.sleepNotifications.tellWillSleep();
  fakes.mainLoop.runPosted();
  fakes.clock.advance(1h);
  fakes.sleepNotifications.tellDidWake();
  fakes.mainLoop.runPosted();
  pass(20s);
  fakes.powerSources.setBattery(10);
  pass(6s);
  fakes.defaults.stored["batteryThreshold"] = Integer{5};
  pass(20s);
  fakes.defaults.stored["ignoredApps"] = Texts{"ffmpeg"};
  pass(40s);
  end();
  const ReplayResult result = replayed();
  EXPECT_EQ(result.differingTicks, 0U);
  const HistoryTimeline timeline = timelineOf(result.history, result.from, result.to);
  EXPECT_EQ(spansOf(timeline),
            (Texts{"winding", "holding", "paused", "winding", "holding", "asleep", "winding",
                   "holding", "blocked", "holding", "winding"}));
  EXPECT_EQ(timeline.charges.size(), 2U);
  ASSERT_EQ(timeline.settings.size(), 2U) << "what the tape begins with is no change";
  EXPECT_EQ(timeline.settings[0].key, "batteryThreshold");
  EXPECT_EQ(timeline.settings[1].to, "ffmpeg");
  ASSERT_EQ(timeline.sleeps.size(), 1U);
  EXPECT_NEAR(Seconds(timeline.sleeps[0].length()).count(), 3600, 1);
}

TEST_F(ReplayTest, SaysWhatAnotherThresholdWouldHaveDone) {
  start();
  work(10, "firefox", 20);
  pass(60s);
  workers.clear();
  work(11, "ffmpeg", 90);
  pass(60s);
  workers.clear();
  pass(40s);
  end();
  const ReplayReport report(replayed(), replayed({{"cpuThresholdPercent", 25.0}}),
                            {"cpuThresholdPercent = 25"});
  EXPECT_TRUE(report.isFaithful());
  // Held from the first tick on: 30 s of grace until then and firefox from the 12th second on; with
  // the other threshold nothing holds from 30 s until ffmpeg has worked for 10 s at 72 s.
  EXPECT_NEAR(Seconds(report.total().difference()).count(), -42, 2.1);
  const auto lines = report.lines(fakes.text, {true, false});
  ASSERT_GE(lines.size(), 6U);
  EXPECT_TRUE(lines[1].starts_with("As recorded, a replay decides the same at each of "));
  EXPECT_EQ(lines[3], "With cpuThresholdPercent = 25:");
  // Until 30 s after the start, and from 72 s to 150 s with the grace period after ffmpeg.
  EXPECT_TRUE(lines[4].starts_with("Held for 1 min 48 s from 2024-05-17 ")) << lines[4];
  EXPECT_TRUE(lines[4].ends_with(": ffmpeg 48 s.")) << lines[4];
  const auto difference = std::ranges::find_if(lines, [](const std::string& line) {
    return line.starts_with("With cpuThresholdPercent = 25 it would have been held for ");
  });
  ASSERT_NE(difference, lines.end());
  EXPECT_NE(difference->find(" less, all of it firefox."), std::string::npos) << *difference;
  ASSERT_NE(difference, lines.begin());
  EXPECT_TRUE((difference - 1)->starts_with("The machine was held for ")) << *(difference - 1);
}

TEST_F(ReplayTest, SaysWhatWasHeldAsTheHistoryDoes) {
  start();
  work(10, "ffmpeg", 80);
  pass(60s);
  workers.clear();
  pass(40s);
  end();
  const ReplayReport report(replayed(), std::nullopt, {});
  const auto lines = report.lines(fakes.text, {true, false});
  const auto has = [&lines](const std::string& begin, const std::string& end) {
    return std::ranges::any_of(lines, [&](const std::string& line) {
      return line.starts_with(begin) && line.ends_with(end);
    });
  };
  // The first quiet tick is at 62 s, 30 s before the hold ends.
  EXPECT_TRUE(has("Held for 1 min 32 s from ", ": ffmpeg 48 s.")) << lines[3];
  EXPECT_TRUE(has("held    ", "")) << "the bar of the day";
  EXPECT_TRUE(has("", "waiting for work to resume; ffmpeg is working"));
  EXPECT_TRUE(has("", "ffmpeg: mean 80% CPU, peak 80% CPU"));
  EXPECT_FALSE(has("The machine was held for ", "")) << "there is nothing to compare with";
  const auto json = JsonValue::read(report.json());
  ASSERT_TRUE(json);
  const JsonValue* history = json->member("history");
  ASSERT_TRUE(history);
  const JsonValue* holds = history->member("holds");
  ASSERT_TRUE(holds && holds->list());
  EXPECT_EQ(holds->list()->size(), 1U);
}

TEST_F(ReplayTest, HoldsAsLongInTheHistoryAsInTheComparison) {
  start();
  work(10, "ffmpeg", 80);
  pass(60s);
  fakes.sleepNotifications.tellWillSleep();
  fakes.mainLoop.runPosted();
  fakes.clock.advance(10min);
  fakes.sleepNotifications.tellDidWake();
  fakes.mainLoop.runPosted();
  pass(60s);
  fakes.clock.advance(10min);  // Nobody announces this sleep.
  pass(60s);
  workers.clear();
  pass(60s);
  end();
  const ReplayResult result = replayed();
  const double held = secondsHeld(result);
  EXPECT_NEAR(held, 210, 6);
  EXPECT_NEAR(Seconds(ReplayReport(result, std::nullopt, {}).total().would).count(), held, 0.001);
}

TEST_F(ReplayTest, PlacesTheHistoryByTheClockOfTheRecording) {
  start();
  work(10, "ffmpeg", 80);
  pass(30s);
  const auto end = fakes.clock.wallTime();
  recorder.reset();
  engine.reset();
  fakes.clock.advance(1000h);
  const ReplayResult result = replayed();
  EXPECT_NEAR(Seconds(end - result.to).count(), 0, 0.1);
  EXPECT_NEAR(Seconds(result.to - result.from).count(), 30, 0.1);
  EXPECT_FALSE(result.history.isRunning);
}

TEST_F(ReplayTest, DoesNotSayHowARunEndedWhoseEndIsNotRecorded) {
  start();
  work(10, "ffmpeg", 80);
  pass(30s);
  recorder->flush();
  const ReplayResult result = replayed();
  end();
  const auto timeline = timelineOf(result.history, result.from, result.to);
  ASSERT_EQ(timeline.holds.size(), 1U);
  EXPECT_EQ(timeline.holds[0].span.ending, HistoryTimeline::Ending::later);
  EXPECT_EQ(timeline.holds[0].span.to, result.to);
}

TEST_F(ReplayTest, SaysUntilWhenARunWasAliveThatAnotherFollows) {
  start();
  work(10, "ffmpeg", 80);
  pass(60s);
  recorder->flush();
  const std::string killed = tape.files.front();
  end();
  tape.files.front() = killed;
  fakes.clock.advance(1h);
  start();
  pass(10s);
  end();
  const ReplayResult result = replayed();
  const auto timeline = timelineOf(result.history, result.from, result.to);
  ASSERT_EQ(timeline.runs.size(), 2U);
  EXPECT_EQ(timeline.runs[0].span.ending, HistoryTimeline::Ending::lost);
  EXPECT_NEAR(Seconds(timeline.runs[0].span.length()).count(), 60, 0.1);
  EXPECT_EQ(timeline.runs[1].span.ending, HistoryTimeline::Ending::ended);
}

TEST_F(ReplayTest, AsksWhoHoldsAssertionsEvenWhereTheyDoNotCount) {
  fakes.defaults.stored["honorAppAssertions"] = false;
  start();
  fakes.assertions.hold(500, "PreventUserIdleSystemSleep");
  pass(60s);
  end();
  EXPECT_EQ(replayed().differingTicks, 0U);
  const auto held = heldFor(replayed({{"honorAppAssertions", true}}));
  ASSERT_EQ(held.size(), 2U);
  EXPECT_EQ(held[1], Texts{"pid 500"});
}

TEST_F(ReplayTest, GoesOnInTheNextFile) {
  start();
  work(10, "ffmpeg", 80);
  pass(20s);
  tape.next = TapeOutput::Answer::beginAnew;
  recorder->flush();
  workers.clear();
  pass(60s);
  end();
  ASSERT_EQ(tape.files.size(), 2U);
  const ReplayResult result = replayed();
  EXPECT_EQ(result.runs, 1U);
  EXPECT_EQ(result.ticks, 41U);
  EXPECT_EQ(result.differingTicks, 0U);
}

TEST_F(ReplayTest, WarmsUpWhereTheBeginningIsGone) {
  start();
  pass(40s);
  work(10, "ffmpeg", 80);
  pass(26s);
  tape.next = TapeOutput::Answer::beginAnew;
  recorder->flush();
  pass(50s);
  workers.clear();
  pass(60s);
  end();
  tape.files.erase(tape.files.begin());
  const ReplayResult result = replayed();
  EXPECT_GE(result.warmUp, 30s);
  EXPECT_LE(result.warmUp, 40s);
  EXPECT_EQ(result.differingTicks, 0U);
  EXPECT_GT(result.ticks, 30U);
  EXPECT_EQ(heldFor(result), std::vector<Texts>{{"ffmpeg"}});
  const ReplayReport report(result, std::nullopt, {});
  EXPECT_NEAR(secondsHeld(result), Seconds(report.total().would).count(), 0.001);
  const auto timeline = timelineOf(result.history, result.from, result.to);
  ASSERT_FALSE(timeline.runs.empty());
  EXPECT_TRUE(timeline.runs[0].span.beganEarlier);
}

TEST_F(ReplayTest, TellsTwoRunsApart) {
  start();
  pass(10s);
  end();
  fakes.clock.advance(1h);
  start();
  pass(10s);
  end();
  ASSERT_EQ(tape.files.size(), 2U);
  const ReplayResult result = replayed();
  EXPECT_EQ(result.runs, 2U);
  EXPECT_EQ(result.differingTicks, 0U);
  const auto timeline = timelineOf(result.history, result.from, result.to);
  ASSERT_EQ(timeline.runs.size(), 2U) << "nobody knows what was between them";
  EXPECT_NEAR(Seconds(timeline.runs[1].span.from - timeline.runs[0].span.to).count(), 3600, 1);
  EXPECT_NEAR(secondsHeld(result), 20, 0.1);
}

TEST_F(ReplayTest, ReplacesNamesThatTheCatalogueDoesNotKnow) {
  fakes.defaults.stored["ignoredApps"] = Texts{"secret-ignored", "vlc"};
  start(Names::madeUp);
  work(10, "secret-project", 80);
  work(11, "ffmpeg", 90);
  work(12, "secret-ignored", 95);
  fakes.processes.add(20, "/opt/secret-viewer");
  fakes.applications.add(20, "org.secret.Viewer", "Secret Viewer");
  fakes.assertions.hold(20, "PreventUserIdleSystemSleep");
  pass(40s);
  end();
  ASSERT_EQ(tape.files.size(), 1U);
  TapeReader reader(tape.files[0]);
  while (reader.next()) {
  }
  for (const TapedApplication& application : reader.inputs().applications) {
    for (const std::string& name :
         {application.executable, application.display, application.bundleID.value_or("")}) {
      EXPECT_EQ(name.find("ecret"), std::string::npos) << name;
    }
  }
  const ReplayResult result = replayed();
  EXPECT_TRUE(result.isMadeUp);
  EXPECT_EQ(result.differingTicks, 0U);
  const auto held = heldFor(result);
  ASSERT_FALSE(held.empty());
  ASSERT_EQ(held.back().size(), 3U) << "the ignored one is ignored under its new name too";
  EXPECT_EQ(held.back().back(), "ffmpeg");
}

TEST_F(ReplayTest, ReplacesNamesInACopyToo) {
  start();
  work(10, "secret-project", 80);
  work(11, "ffmpeg", 90);
  fakes.processes.add(20, "/opt/secret-viewer");
  fakes.applications.add(20, "org.secret.Viewer", "Secret Viewer");
  fakes.assertions.hold(20, "PreventUserIdleSystemSleep");
  fakes.processes.add(21, "/opt/a");
  fakes.applications.add(21, "a.asking.One", "A");
  fakes.assertions.hold(21, "PreventUserIdleSystemSleep");
  pass(40s);
  tape.next = TapeOutput::Answer::beginAnew;
  pass(80s);
  end();
  ASSERT_EQ(tape.files.size(), 2U);
  MemoryTape copied;
  MadeUpNames names(fakes.text);
  TapeCopy copy(copied, fakes.text, &names);
  for (const std::string& file : tape.files)
    copy.copy(file);
  copy.finish();
  EXPECT_EQ(copy.ticks(), 61U);
  tape.files = copied.files;
  const ReplayResult result = replayed();
  EXPECT_TRUE(result.isMadeUp);
  EXPECT_EQ(result.runs, 1U);
  EXPECT_EQ(result.ticks, 61U);
  EXPECT_EQ(result.differingTicks, 0U);
  for (const Texts& held : heldFor(result)) {
    for (const std::string& name : held)
      EXPECT_TRUE(name == "ffmpeg" || name.starts_with("app-0")) << name;
  }
}

TEST_F(ReplayTest, KeepsItsPlacesFewInABuildOfCountlessNames) {
  start();
  for (std::int32_t number = 0; number < 1500; ++number) {
    fakes.processes.add(100 + number, "/opt/step-" + std::to_string(number));
    pass(2s);
    fakes.processes.remove(100 + number);
  }
  end();
  EXPECT_EQ(replayed().differingTicks, 0U);
}

}  // namespace
}  // namespace staylit
