#include "Staylit/Desktop/Display/DisplayTrial.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <optional>
#include <string>

#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/RunUntil.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit {
namespace {

using Kind = DisplayTrial::Verdict::Kind;
using platform::testing::TemporaryFolder;

/// Here the trial's process is a script, which writes what the real process might write.
class DisplayTrialTest : public ::testing::Test {
 protected:
  std::string script(const std::string& text) {
    folder.write("trial", "#!/bin/sh\n" + text + "\n");
    ::chmod((folder.path() / "trial").c_str(), 0700);
    return folder.path() / "trial";
  }
  void begin(const std::string& program, double patience = 60) {
    trial.emplace(
        loop, [this](const DisplayTrial::Verdict& said) { verdict = said; }, program,
        tidewell::Seconds{patience});
  }
  bool hasVerdict() {
    return platform::testing::runUntil(loop, [this] { return verdict.has_value(); });
  }
  /// Whether the process lives whose number the script wrote to "pid".
  bool isAlive() {
    std::ifstream file(folder.path() / "pid");
    pid_t pid = 0;
    file >> pid;
    return pid > 0 && ::kill(pid, 0) == 0;
  }

  TemporaryFolder folder;
  platform::EventLoop loop;
  std::optional<DisplayTrial> trial;
  std::optional<DisplayTrial::Verdict> verdict;
};

TEST_F(DisplayTrialTest, TellsThePlatformOfAUsableDisplayAndKeepsItConnected) {
  begin(script("echo $$ > '" + (folder.path() / "pid").string() + "'; echo usable xcb; read x"));
  ASSERT_TRUE(hasVerdict());
  EXPECT_EQ(verdict->kind, Kind::usable);
  EXPECT_EQ(verdict->platform, "xcb");
  EXPECT_TRUE(isAlive());
  trial.reset();
  EXPECT_FALSE(isAlive());
}

TEST_F(DisplayTrialTest, TellsWhatTheProcessFound) {
  const std::pair<const char*, Kind> cases[] = {{"echo of another build X", Kind::ofAnotherBuild},
                                                {"echo not loadable X", Kind::notLoadable},
                                                {"exit 0", Kind::refused},
                                                {"kill -ABRT $$", Kind::refused},
                                                {"printf 'usable xcb'", Kind::refused},
                                                {"yes | tr -d '\\n'", Kind::refused},
                                                {"echo something else", Kind::refused}};
  for (const auto& [said, kind] : cases) {
    verdict.reset();
    begin(script(said));
    ASSERT_TRUE(hasVerdict()) << said;
    EXPECT_EQ(verdict->kind, kind) << said;
  }
}

TEST_F(DisplayTrialTest, TellsWhyTheWindowsCannotBeLoaded) {
  begin(script("echo 'not loadable cannot load x.so: no libQt6Gui.so.6'; exit 1"));
  ASSERT_TRUE(hasVerdict());
  EXPECT_EQ(verdict->reason, "cannot load x.so: no libQt6Gui.so.6");
}

TEST_F(DisplayTrialTest, EndsAProcessThatSaysNothing) {
  begin(script("echo $$ > '" + (folder.path() / "pid").string() + "'; trap '' TERM; read x"), 0.5);
  ASSERT_TRUE(hasVerdict());
  EXPECT_EQ(verdict->kind, Kind::silent);
  trial.reset();
  EXPECT_FALSE(isAlive());
}

TEST_F(DisplayTrialTest, EndsWhenItsProcessCannotBeStarted) {
  begin(folder.path() / "missing");
  ASSERT_TRUE(hasVerdict());
  EXPECT_EQ(verdict->kind, Kind::refused);
}

TEST_F(DisplayTrialTest, MayBeDestroyedWhenItTellsItsVerdict) {
  trial.emplace(
      loop,
      [this](const DisplayTrial::Verdict& said) {
        trial.reset();
        verdict = said;
      },
      script("echo usable offscreen; read x"));
  EXPECT_TRUE(hasVerdict());
}

}  // namespace
}  // namespace staylit
