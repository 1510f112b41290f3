#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <variant>
#include <vector>

#include "Staylit/Replay/TapeBlock.h"
#include "Staylit/Replay/TapeFormat.h"
#include "Staylit/Replay/TapeReader.h"
#include "Staylit/Replay/TapeWriter.h"
#include "Tests/Staylit/Replay/MemoryTape.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;
using tidewell::Moment;
using tidewell::WallTime;
using Integer = std::int64_t;
using Texts = std::vector<std::string>;

constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();

TapedApplication application(const std::string& name, TapedUsage usage) {
  return {name, std::nullopt, name, usage, true};
}

/// A tape of one run, with events every two seconds.
class TapeTest : public testing::Test {
 protected:
  TapeTest() { writer.begin({at, wallTime, "Staylit 9", 77, true, false}); }

  void tick(EngineStatus outcome = EngineStatus::idle()) {
    at += 2s;
    TapedTick next;
    next.at = at;
    next.outcome = std::move(outcome);
    writer.add(next, inputs);
  }

  /// All that the first file has.
  TapeReader reader() {
    writer.flush();
    return TapeReader(tape.files.at(0));
  }

  static std::size_t count(TapeReader& reader) {
    std::size_t events = 0;
    while (reader.next())
      ++events;
    return events;
  }

  Moment at{1h};
  WallTime wallTime{std::chrono::sys_days(std::chrono::year(2026) / 11 / 22)};
  TapedInputs inputs;
  MemoryTape tape;
  TapeWriter writer{tape};
};

TEST_F(TapeTest, TellsWhereItBegins) {
  TapeReader tapeReader = reader();
  const auto event = tapeReader.next();
  ASSERT_TRUE(event);
  const auto& began = std::get<TapeBegan>(*event);
  EXPECT_EQ(began.at, Moment(1h));
  EXPECT_EQ(began.wallTime, wallTime);
  EXPECT_EQ(began.program, "Staylit 9");
  EXPECT_EQ(began.run, 77U);
  EXPECT_TRUE(began.isFirst);
  EXPECT_FALSE(began.isMadeUp);
  EXPECT_FALSE(tapeReader.next());
  EXPECT_FALSE(tapeReader.hasUnreadableRest());
}

TEST_F(TapeTest, TellsAllThatATickSaw) {
  inputs.applications = {application("ffmpeg", {1, 2, 3}), application("make", {4, 5, kLargest})};
  inputs.applications[1].bundleID = "org.example.Make";
  inputs.asserting = {"vlc"};
  inputs.power = {false, 42, true, true};
  inputs.settings = {{"graceSeconds", Integer{60}},
                     {"cpuThresholdPercent", 12.5},
                     {"keepScreenOn", true},
                     {"ignoredApps", Texts{"vlc", "x"}}};
  tick(EngineStatus::blocked("battery below 50%"));
  TapeReader tapeReader = reader();
  tapeReader.next();
  const auto event = tapeReader.next();
  ASSERT_TRUE(event);
  const auto& read = std::get<TapedTick>(*event);
  EXPECT_EQ(read.at, at);
  EXPECT_EQ(read.outcome, EngineStatus::blocked("battery below 50%"));
  const TapedInputs& seen = tapeReader.inputs();
  ASSERT_EQ(seen.applications.size(), 2U);
  EXPECT_EQ(seen.applications[0].executable, "ffmpeg");
  EXPECT_EQ(seen.applications[0].bundleID, std::nullopt);
  EXPECT_EQ(seen.applications[0].usage, (TapedUsage{1, 2, 3}));
  EXPECT_EQ(seen.applications[1].bundleID, "org.example.Make");
  EXPECT_EQ(seen.applications[1].usage, (TapedUsage{4, 5, kLargest}));
  EXPECT_TRUE(seen.applications[1].isPresent);
  EXPECT_EQ(seen.asserting, Texts{"vlc"});
  EXPECT_EQ(seen.power, inputs.power);
  EXPECT_EQ(seen.settings, inputs.settings);
}

TEST_F(TapeTest, TellsWhatChangedFromTickToTick) {
  inputs.applications = {application("a", {100, 0, 0}), application("b", {7, 0, 0})};
  tick(EngineStatus::holding({"a"}));
  inputs.applications[0].usage = {90, 0, 0};  // A sum drops when a process ends.
  inputs.applications[1].isPresent = false;
  tick(EngineStatus::holding({"a"}));
  inputs.applications.push_back(application("c", {5, 5, 5}));
  inputs.applications[0].display = "A";
  tick(EngineStatus::winding(117));
  TapeReader tapeReader = reader();
  for (int events = 0; events < 3; ++events)
    tapeReader.next();
  EXPECT_EQ(tapeReader.inputs().applications.at(0).usage.cpuNanos, 90U);
  EXPECT_FALSE(tapeReader.inputs().applications.at(1).isPresent);
  EXPECT_EQ(tapeReader.inputs().applications.at(1).usage.cpuNanos, 7U) << "as it was last";
  const std::uint32_t version = tapeReader.version();
  const auto event = tapeReader.next();
  ASSERT_TRUE(event);
  EXPECT_NE(tapeReader.version(), version);
  EXPECT_EQ(std::get<TapedTick>(*event).outcome, EngineStatus::winding(0)) << "without seconds";
  EXPECT_EQ(tapeReader.inputs().applications.at(2).executable, "c");
  EXPECT_EQ(tapeReader.inputs().applications.at(0).display, "A");
}

TEST_F(TapeTest, TellsWhenASpellWithoutWorkBeganAndWasMeasured) {
  TapedTick quiet;
  quiet.at = at + 2s;
  quiet.quietSince = at + 2s + 150us;
  quiet.quietJudgedAt = at + 2s + 151us;
  writer.add(quiet, inputs);
  TapeReader tapeReader = reader();
  tapeReader.next();
  const auto event = tapeReader.next();
  ASSERT_TRUE(event);
  EXPECT_EQ(std::get<TapedTick>(*event).quietSince, quiet.quietSince);
  EXPECT_EQ(std::get<TapedTick>(*event).quietJudgedAt, quiet.quietJudgedAt);
}

TEST_F(TapeTest, TellsOfPausesSleepsTheEndAndTheWallClock) {
  using Kind = TapeMark::Kind;
  for (const Kind kind :
       {Kind::paused, Kind::resumed, Kind::willSleep, Kind::didWake, Kind::ended}) {
    writer.add(TapeMark{at += 1s, kind});
  }
  writer.add(TapeClockSet{at, wallTime + 24h});
  TapeReader tapeReader = reader();
  tapeReader.next();
  for (const Kind kind :
       {Kind::paused, Kind::resumed, Kind::willSleep, Kind::didWake, Kind::ended}) {
    const auto event = tapeReader.next();
    ASSERT_TRUE(event);
    EXPECT_EQ(std::get<TapeMark>(*event).kind, kind);
  }
  const auto event = tapeReader.next();
  ASSERT_TRUE(event);
  EXPECT_EQ(std::get<TapeClockSet>(*event).wallTime, wallTime + 24h);
}

TEST_F(TapeTest, HandsOverWhatIsAMinuteOld) {
  for (int ticks = 0; ticks < 29; ++ticks)
    tick();
  EXPECT_TRUE(tape.files.empty());
  tick();
  ASSERT_EQ(tape.files.size(), 1U);
  TapeReader tapeReader(tape.files[0]);
  EXPECT_EQ(count(tapeReader), 31U);
}

TEST_F(TapeTest, CostsFewBytesWhileNothingChanges) {
  inputs.applications = {application("ffmpeg", {1, 2, 3})};
  tick();
  const std::size_t before = (writer.flush(), tape.files.at(0).size());
  for (int ticks = 0; ticks < 29; ++ticks)
    tick();
  writer.flush();
  EXPECT_LE(tape.files.at(0).size() - before, 60U);
}

TEST_F(TapeTest, BeginsAnewInAnotherFileWhenTheOutputAsksForThat) {
  tape.next = TapeOutput::Answer::beginAnew;
  tick();
  EXPECT_FALSE(writer.needsBeginning());
  writer.flush();
  EXPECT_TRUE(writer.needsBeginning());
  inputs.applications = {application("ffmpeg", {1, 2, 3})};
  writer.begin({at, wallTime, "Staylit 9", 77, false, false});
  tick();
  writer.flush();
  ASSERT_EQ(tape.files.size(), 2U);
  TapeReader second(tape.files[1]);
  EXPECT_EQ(count(second), 2U);
  EXPECT_EQ(second.inputs().applications.size(), 1U);
}

TEST_F(TapeTest, StopsWhenTheOutputTakesNothingMore) {
  tape.next = TapeOutput::Answer::stop;
  tick();
  writer.flush();
  EXPECT_TRUE(writer.isStopped());
  const std::size_t size = tape.files.at(0).size();
  tick();
  writer.flush();
  EXPECT_EQ(tape.files.at(0).size(), size);
}

TEST_F(TapeTest, MakesNamesThatNobodyCanShowSafe) {
  inputs.applications = {application("a\x1b[31m\nb", {})};
  tick();
  TapeReader tapeReader = reader();
  count(tapeReader);
  EXPECT_EQ(tapeReader.inputs().applications.at(0).executable, "a\uFFFD[31m\uFFFDb");
}

TEST_F(TapeTest, LosesOnlyTheLastPieceWhenThatWasNotWritten) {
  tick();
  writer.flush();
  const std::size_t whole = tape.files.at(0).size();
  tick();
  writer.flush();
  const std::string& file = tape.files.at(0);
  for (std::size_t size = whole; size < file.size(); ++size) {
    TapeReader cut(std::string_view(file).substr(0, size));
    EXPECT_EQ(count(cut), 2U) << size;
    EXPECT_EQ(cut.hasUnreadableRest(), size > whole) << size;
  }
}

TEST_F(TapeTest, NoticesDamageOfEachByte) {
  inputs.applications = {application("ffmpeg", {1, 2, 3})};
  tick(EngineStatus::holding({"ffmpeg"}));
  writer.flush();
  const std::string file = tape.files.at(0);
  for (std::size_t place = 0; place < file.size(); ++place) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      std::string damaged = file;
      damaged[place] = static_cast<char>(static_cast<unsigned char>(damaged[place]) ^ (1U << bit));
      TapeReader tapeReader(damaged);
      EXPECT_EQ(count(tapeReader), 0U) << place;
      EXPECT_TRUE(!tapeReader.isTape() || tapeReader.hasUnreadableRest()) << place;
    }
  }
}

/// What a checksum cannot find, because somebody made it on purpose.
TEST_F(TapeTest, SurvivesEachDamageBelowTheChecksum) {
  inputs.applications = {application("ffmpeg", {1, 2, 3}), application("make", {4, 5, 6})};
  inputs.asserting = {"vlc"};
  inputs.power = {false, 42, true, true};
  inputs.settings = {{"graceSeconds", Integer{60}}, {"ignoredApps", Texts{"vlc"}}};
  tick(EngineStatus::holding({"ffmpeg"}));
  inputs.applications[0].usage.cpuNanos = 1'000'000'000;
  tick(EngineStatus::winding(3));
  writer.add(TapeMark{at, TapeMark::Kind::ended});
  writer.flush();
  std::string_view blocks = tape.files.at(0);
  blocks.remove_prefix(tapeFormat::kOpening.size());
  const auto frames = tapeBlock::takeUnpacked(blocks);
  ASSERT_TRUE(frames);
  std::size_t readable = 0;
  for (std::size_t place = 0; place < frames->size(); ++place) {
    for (unsigned value = 0; value < 256; ++value) {
      std::string damaged = *frames;
      damaged[place] = static_cast<char>(value);
      const std::string file = std::string(tapeFormat::kOpening) + tapeBlock::packed(damaged);
      TapeReader tapeReader(file);
      readable += count(tapeReader);
    }
  }
  EXPECT_GT(readable, frames->size()) << "before the damage everything is read";
}

TEST(TapeFileTest, TellsWhatIsNoTapeAndWhatIsALaterOne) {
  EXPECT_FALSE(TapeReader("").isTape());
  EXPECT_FALSE(TapeReader("Staylit").isTape());
  EXPECT_FALSE(TapeReader("Staylit").isOfLaterVersion());
  EXPECT_TRUE(TapeReader("Staylit tape 1\n").isTape());
  EXPECT_FALSE(TapeReader("Staylit tape 2\n").isTape());
  EXPECT_TRUE(TapeReader("Staylit tape 2\n").isOfLaterVersion());
}

}  // namespace
}  // namespace staylit
