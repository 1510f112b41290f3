#include "Platform/Linux/Sleep/LxqtSettings.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using Deed = LxqtSettings::Deed;

LxqtSettings settingsOf(const std::string& file) {
  LxqtSettings settings;
  settings.add(file);
  return settings;
}

Deed deedOf(const std::string& action) {
  return settingsOf("[General]\nenableIdlenessWatcher=true\nidlenessACAction=" + action + "\n")
      .deed(true);
}

TEST(LxqtSettings, KnowWhatEndsWorkAndWhatIsDoneToTheScreen) {
  for (const char* action : {"0", "1", "2", "3", "4"})
    EXPECT_EQ(deedOf(action), Deed::endsWork) << action;
  for (const char* action : {"-2", "5", "6"})
    EXPECT_EQ(deedOf(action), Deed::toTheScreen) << action;
  for (const char* action : {"-1", "", "x"})
    EXPECT_EQ(deedOf(action), Deed::none) << action;
}

TEST(LxqtSettings, DifferOnBattery) {
  const LxqtSettings settings = settingsOf(
      "[General]\nenableIdlenessWatcher=true\nidlenessBatteryAction=4\n"
      "idlenessBatteryTime=@Variant(\\0\\0\\0\\xf\\0\\0u0)\n");
  EXPECT_EQ(settings.deed(true), Deed::none);
  EXPECT_EQ(settings.deed(false), Deed::endsWork);
  EXPECT_EQ(settings.after(false), 30s);
  EXPECT_EQ(settings.after(true), 15min);
  EXPECT_EQ(settings.setting(false), "idlenessBatteryAction is 4");
}

TEST(LxqtSettings, AreNothingWhileTheWatcherIsOff) {
  for (const char* file :
       {"", "[General]\nidlenessACAction=4\n",
        "[General]\nenableIdlenessWatcher=false\nidlenessACAction=4\n",
        "[Other]\nenableIdlenessWatcher=true\n[General]\nidlenessACAction=4\n"}) {
    EXPECT_EQ(settingsOf(file).deed(true), Deed::none) << file;
    EXPECT_EQ(settingsOf(file).setting(true), "enableIdlenessWatcher is false") << file;
  }
}

TEST(LxqtSettings, AreTakenOverFromOlderVersions) {
  const auto after = [](const std::string& time) {
    return settingsOf(
        "[General]\r\nenableIdlenessWatcher=true\r\nidlenessAction=4\r\n"
        "idlenessTimeSecs=" +
        time + "\r\n");
  };
  EXPECT_EQ(after("600").deed(true), Deed::endsWork);
  EXPECT_EQ(after("600").after(true), 10min);
  EXPECT_EQ(after("5").after(true), 1min);
  EXPECT_EQ(after("9999").after(true), 3599s);
}

TEST(LxqtSettings, OfTheUserComeBeforeThoseOfTheMachine) {
  const testing::TemporaryFolder own;
  const testing::TemporaryFolder shared;
  for (const auto* folder : {&own, &shared})
    std::filesystem::create_directory(folder->path() / "lxqt");
  shared.write("lxqt/lxqt-powermanagement.conf",
               "[General]\nenableIdlenessWatcher=true\nidlenessACAction=4\n");
  EXPECT_EQ(LxqtSettings::read({own.path(), shared.path()}).deed(true), Deed::endsWork);
  own.write("lxqt/lxqt-powermanagement.conf", "[General]\nidlenessACAction=5\n");
  EXPECT_EQ(LxqtSettings::read({own.path(), shared.path()}).deed(true), Deed::toTheScreen);
}

}  // namespace
}  // namespace platform
