// Recordings of real work, replayed. In Tests/Data/recordings/README.md stands how each was made:
// in most of them the work begins after 40 seconds and ends after 90.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Staylit/Replay/Replay.h"
#include "Tests/Fakes/FakeText.h"

namespace staylit {
namespace {

using Texts = std::vector<std::string>;

struct Recording {
  const char* name;
  Texts holds;
};

std::string recordingNamed(const std::string& name) {
  std::ifstream file(std::string(RECORDINGS) + "/" + name + ".tape", std::ios::binary);
  std::stringstream content;
  content << file.rdbuf();
  return content.str();
}

ReplayResult replayOf(const std::string& name, tidewell::PropertyDictionary settings = {}) {
  Replay replay(std::make_shared<tidewell::FakeText>(), std::move(settings));
  replay.play(recordingNamed(name));
  return replay.finish();
}

/// "54-92 ffmpeg", in seconds since the beginning, for each time in which the machine is held for
/// work, and "92-122 grace" for each grace period.
Texts holdsIn(const ReplayResult& result) {
  const auto second = [&result](tidewell::WallTime at) {
    return std::to_string(std::lround(tidewell::Seconds(at - result.from).count()));
  };
  Texts holds;
  for (const auto& hold : timelineOf(result.history, result.from, result.to).holds) {
    for (auto part : hold.parts) {
      std::string text = second(part.from) + "-" + second(part.to);
      if (part.state == StatusReport::State::winding) text += " grace";
      std::ranges::sort(part.names);
      for (const std::string& name : part.names)
        text += (name == part.names.front() ? " " : " + ") + name;
      holds.push_back(text);
    }
  }
  return holds;
}

class RecordingsTest : public testing::TestWithParam<Recording> {};

TEST_P(RecordingsTest, AreDecidedAsTheyWere) {
  const ReplayResult result = replayOf(GetParam().name);
  EXPECT_GE(result.ticks, 30U);
  EXPECT_EQ(result.differingTicks, 0U);
  EXPECT_FALSE(result.hasUnreadableRest);
  EXPECT_EQ(holdsIn(result), GetParam().holds);
}

INSTANTIATE_TEST_SUITE_P(
    OfRealWork, RecordingsTest,
    testing::Values(
        Recording{"quiet", {"0-30 grace"}},
        Recording{"ninja", {"0-30 grace", "52-94 cc1plus", "94-124 grace"}},
        Recording{"short-commands", {"0-30 grace", "54-92 dash", "92-122 grace"}},
        Recording{"checksums", {"0-30 grace", "54-92 sha256sum", "92-124 grace"}},
        Recording{"copy-to-disk", {"0-30 grace", "54-92 dd", "92-124 grace"}},
        Recording{"download", {"0-30 grace", "54-94 Python + curl / wget", "94-124 grace"}},
        Recording{"upload", {"0-30 grace", "54-94 Python + curl / wget", "94-126 grace"}},
        Recording{"compress", {"0-30 grace", "54-92 zstd", "92-124 grace"}},
        Recording{"bursts", {"0-30 grace"}},
        Recording{"asking", {"0-30 grace", "40-60 systemd-inhibit", "60-90 grace"}}),
    [](const auto& recording) {
      std::string name = recording.param.name;
      std::erase(name, '-');
      return name;
    });

TEST(RecordingTest, TellsWhatAHigherThresholdWouldHaveDone) {
  EXPECT_EQ(holdsIn(replayOf("ninja", {{"cpuThresholdPercent", 1000.0}})), Texts{"0-30 grace"});
}

}  // namespace
}  // namespace staylit
