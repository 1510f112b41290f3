#include "Staylit/Replay/ReplayRequest.h"

#include <gtest/gtest.h>

namespace staylit {
namespace {

TEST(ReplayRequestTest, IsThereWhenItIsAskedFor) {
  EXPECT_FALSE(ReplayRequest::in({"staylit"}));
  EXPECT_FALSE(ReplayRequest::in({"staylit", "--replay", "--diagnose"}));
  const auto ring = ReplayRequest::in({"staylit", "--replay"});
  ASSERT_TRUE(ring);
  EXPECT_EQ(ring->file, std::nullopt);
  EXPECT_EQ(ring->form, ReplayRequest::Form::text);
  const auto file = ReplayRequest::in({"staylit", "--replay", "a.tape", "--json"});
  ASSERT_TRUE(file);
  EXPECT_EQ(file->file, "a.tape");
  EXPECT_EQ(file->form, ReplayRequest::Form::json);
}

TEST(ReplayRequestTest, TakesSettingsAsTheyAreWritten) {
  const auto request = ReplayRequest::in({"staylit", "--replay", "a.tape", "--set",
                                          "cpuThresholdPercent=25", "--set", "graceSeconds=60"});
  ASSERT_TRUE(request);
  EXPECT_EQ(request->error, "");
  ASSERT_EQ(request->settings.size(), 2U);
  EXPECT_EQ(request->settings[0].key, "cpuThresholdPercent");
  EXPECT_EQ(request->settingTexts[0], "cpuThresholdPercent = 25");
}

TEST(ReplayRequestTest, SaysWhatIsWrong) {
  const auto error = [](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "staylit");
    return ReplayRequest::in(arguments)->error;
  };
  EXPECT_EQ(error({"--replay", "a", "--set"}), "--set needs key=value");
  EXPECT_EQ(error({"--replay", "a", "--set", "--json"}), "--set needs key=value");
  EXPECT_EQ(error({"--replay", "a", "--set", "x=1"}), "there is no setting \"x\"");
  EXPECT_EQ(error({"--replay", "a", "--ring"}), "--ring needs no file");
  EXPECT_EQ(error({"--replay", "--ring"}), "");
  EXPECT_EQ(error({"--replay", "a", "--set", "verbose=true", "--set", "verbose=false"}),
            "verbose is set twice");
}

TEST(RecordRequestTest, NeedsAFile) {
  EXPECT_FALSE(RecordRequest::in({"staylit"}));
  EXPECT_EQ(RecordRequest::in({"staylit", "--record"})->error, "--record needs a file");
  EXPECT_EQ(RecordRequest::in({"staylit", "--record", "--anonymous"})->error,
            "--record needs a file");
  EXPECT_EQ(RecordRequest::in({"staylit", "--record", "-"})->error, "--record needs a file");
  const auto request = RecordRequest::in({"staylit", "--record", "a.tape", "--anonymous"});
  EXPECT_EQ(request->error, "");
  EXPECT_EQ(request->file, "a.tape");
  EXPECT_TRUE(request->hasMadeUpNames);
  EXPECT_FALSE(request->isOfRing);
  EXPECT_TRUE(RecordRequest::in({"staylit", "--record", "a", "--ring"})->isOfRing);
}

}  // namespace
}  // namespace staylit
