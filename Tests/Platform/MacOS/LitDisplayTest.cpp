#include "Platform/MacOS/Sleep/LitDisplay.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace platform {
namespace {

using tidewell::ListedAssertion;
using Assertions = std::vector<ListedAssertion>;

const std::string kDaemon = "/System/Library/CoreServices/powerd.bundle/powerd";

ListedAssertion named(const std::string& name) {
  return {"PreventUserIdleSystemSleep", 255, name};
}

const ListedAssertion kOfTheDisplay = named("Powerd - Prevent sleep while display is on");

Assertions leftOf(const Assertions& assertions, const std::string& owner) {
  return withoutLitDisplay(assertions, [&] { return owner; });
}

TEST(LitDisplay, KeepsNoMachineAwakeByItself) {
  EXPECT_EQ(leftOf({kOfTheDisplay}, kDaemon), Assertions{});
  EXPECT_EQ(leftOf({named("Prevent sleep while display is on")}, kDaemon), Assertions{});
}

TEST(LitDisplay, LeavesWhatElseThePowerDaemonHolds) {
  const auto other = named("com.apple.powermanagement.acwakelinger");
  EXPECT_EQ(leftOf({other, kOfTheDisplay, other}, kDaemon), (Assertions{other, other}));
}

TEST(LitDisplay, LeavesWhatOthersCallTheSame) {
  for (const std::string owner :
       {"/usr/local/bin/powerd", "/System/Applications/Music.app/Contents/MacOS/Music",
        "/Users/somebody/System/powerd", "/System/Library/notpowerd", ""}) {
    EXPECT_EQ(leftOf({kOfTheDisplay}, owner), Assertions{kOfTheDisplay}) << owner;
  }
}

TEST(LitDisplay, LeavesNamesThatEndOtherwise) {
  for (const std::string name : {"Prevent sleep while display is on battery", "display is on", ""})
    EXPECT_EQ(leftOf({named(name)}, kDaemon), Assertions{named(name)}) << name;
}

TEST(LitDisplay, AsksForTheOwnerOnlyWhereANameFitsAndOnce) {
  int questions = 0;
  const auto owner = [&] { return ++questions, kDaemon; };
  withoutLitDisplay({named("a film is playing")}, owner);
  EXPECT_EQ(questions, 0);
  withoutLitDisplay({kOfTheDisplay, kOfTheDisplay}, owner);
  EXPECT_EQ(questions, 1);
}

}  // namespace
}  // namespace platform
