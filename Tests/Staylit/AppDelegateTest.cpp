#include "Staylit/AppDelegate.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Staylit/Prefs.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Fakes/FakeUserInterface.h"

namespace staylit {
namespace {

using Texts = std::vector<std::string>;

class AppDelegateTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(setenv("TZ", "UTC0", 1), 0); }

  tidewell::FakePorts fakes;
  FakeUserInterface userInterface{fakes.calls};
  AppDelegate delegate{fakes.ports, userInterface};
};

TEST_F(AppDelegateTest, HasNeitherEngineNorMenuBarBeforeLaunchingHasFinished) {
  EXPECT_EQ(delegate.engine(), nullptr);
  EXPECT_EQ(delegate.menuBar(), nullptr);
  EXPECT_TRUE(fakes.calls->all().empty());
}

TEST_F(AppDelegateTest, MakesTheMenuBarThenStartsTheEngineAndThenLogsThatStaylitStarted) {
  const Texts inOrder = {"make status item", "observe sleep and wake", "schedule timer",
                         "list processes", "log Staylit started"};
  delegate.applicationDidFinishLaunching();
  ASSERT_NE(delegate.engine(), nullptr);
  ASSERT_NE(delegate.menuBar(), nullptr);
  EXPECT_EQ(userInterface.menu, delegate.menuBar());
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
  EXPECT_EQ(fakes.log.lines().back(), "info: Staylit started");
}

TEST_F(AppDelegateTest, KeepsAHistoryFromTheFirstTickToTheEnd) {
  fakes.keepHistory();
  delegate.applicationDidFinishLaunching();
  ASSERT_EQ(fakes.historyLines.lines.size(), 3U);
  EXPECT_NE(fakes.historyLines.lines[0].find("\"kind\":\"started\""), std::string::npos);
  EXPECT_NE(fakes.historyLines.lines[2].find("\"kind\":\"state\""), std::string::npos);
  delegate.applicationWillTerminate();
  EXPECT_NE(fakes.historyLines.lines.back().find("\"kind\":\"stopped\""), std::string::npos);
}

TEST_F(AppDelegateTest, OffersTheStatusBeforeTheFirstTick) {
  const Texts inOrder = {"offer status", "list processes"};
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
  ASSERT_NE(userInterface.reporter, nullptr);
  EXPECT_EQ(userInterface.reporter->report().summary, "Work stopped \u2014 releasing in 120s");
}

TEST_F(AppDelegateTest, ShowsFirstThatItIsIdleAndThenWhatTheFirstTickFound) {
  delegate.applicationDidFinishLaunching();
  EXPECT_TRUE(userInterface.shown.empty()) << "the loop has not run";
  fakes.mainLoop.runPosted();
  ASSERT_EQ(userInterface.shown.size(), 2U);
  EXPECT_EQ(userInterface.shown[0].toolTip, "Idle \u2014 your Mac can sleep");
  EXPECT_EQ(userInterface.shown[1].toolTip, "Work stopped \u2014 releasing in 120s");
}

TEST_F(AppDelegateTest, KeepsTheStatusItemAndTheMenuWhenItTerminates) {
  delegate.applicationDidFinishLaunching();
  delegate.applicationWillTerminate();
  EXPECT_NE(userInterface.menu, nullptr);
  EXPECT_EQ(userInterface.menu->menuNeedsUpdate().size(), 7U);
}

TEST(AppDelegate, DestroysItsWindowsAndTheirObserversBeforeTheEngine) {
  tidewell::FakePorts fakes;
  FakeUserInterface userInterface(fakes.calls);
  auto delegate = std::make_unique<AppDelegate>(fakes.ports, userInterface);
  delegate->applicationDidFinishLaunching();
  delegate->menuBar()->openApps();
  delegate->menuBar()->openSettings();
  int told = 0;
  const Subscription apps = userInterface.windows[0]->appsView->observe([&] { ++told; });
  const Subscription settings = userInterface.windows[1]->settingsView->observe([&] { ++told; });
  delegate->engine()->tick();
  fakes.calls->clear();
  delegate.reset();
  const Texts inOrder = {"end of window Sleep", "end of window ", "release 1"};
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 0);
}

TEST_F(AppDelegateTest, ShowsTheFirstTickToAPersonAtATerminal) {
  fakes.console.outputTerminal = true;
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(fakes.console.output, "09:00:00  Work stopped \u2014 releasing in 120s\n");
}

TEST_F(AppDelegateTest, WritesNothingWhereStandardOutputIsNoTerminal) {
  fakes.console.errorTerminal = true;
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(fakes.console.both, "");
}

TEST_F(AppDelegateTest, TerminatingWhileHoldingStopsTheTimerThenReleasesEverything) {
  const Texts inOrder = {"invalidate timer", "release 1", "release 2"};
  fakes.defaults.stored["keepScreenOn"] = true;
  delegate.applicationDidFinishLaunching();
  ASSERT_EQ(fakes.power.live.size(), 2U);
  delegate.applicationWillTerminate();
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
  EXPECT_TRUE(fakes.power.live.empty());
  EXPECT_FALSE(fakes.mainLoop.timers[0]->valid);
}

TEST_F(AppDelegateTest, NoTickComesAfterTerminating) {
  delegate.applicationDidFinishLaunching();
  delegate.applicationWillTerminate();
  fakes.mainLoop.fireTimers();
  fakes.mainLoop.runPosted();
  EXPECT_EQ(fakes.calls->count("list processes"), 1U) << "that of the start";
  EXPECT_TRUE(fakes.power.live.empty());
}

TEST_F(AppDelegateTest, TerminatingWithNothingHeldMakesNoCallAndLogsNothing) {
  fakes.powerSources.lowPowerMode = true;
  delegate.applicationDidFinishLaunching();
  const std::size_t lines = fakes.log.lines().size();
  delegate.applicationWillTerminate();
  EXPECT_TRUE(fakes.power.calls.empty());
  EXPECT_EQ(fakes.log.lines().size(), lines);
}

TEST_F(AppDelegateTest, TerminatingWritesNoSettingAndNoLineOfItsOwn) {
  delegate.applicationDidFinishLaunching();
  delegate.applicationWillTerminate();
  EXPECT_TRUE(fakes.defaults.written.empty());
  EXPECT_EQ(fakes.log.lines(), (Texts{"info: holding sleep \u2014 waiting for work to resume",
                                      "info: Staylit started", "info: released sleep hold"}));
}

TEST_F(AppDelegateTest, TerminatingBeforeLaunchingHasFinishedDoesNothing) {
  delegate.applicationWillTerminate();
  EXPECT_TRUE(fakes.calls->all().empty());
}

TEST_F(AppDelegateTest, TerminatingTwiceIsHarmless) {
  delegate.applicationDidFinishLaunching();
  delegate.applicationWillTerminate();
  fakes.calls->clear();
  delegate.applicationWillTerminate();
  EXPECT_TRUE(fakes.calls->all().empty());
}

TEST_F(AppDelegateTest, ShowsChooseAppsWhenTheProgramIsStartedOnceMore) {
  delegate.applicationDidFinishLaunching();
  fakes.calls->clear();
  delegate.applicationShouldHandleReopen();
  ASSERT_EQ(userInterface.windows.size(), 1U);
  EXPECT_NE(userInterface.windows[0]->appsView, nullptr);
  EXPECT_TRUE(userInterface.windows[0]->isInFront);
  EXPECT_EQ(fakes.calls->all(),
            (Texts{"make apps window", "make key and order front", "activate"}));
  userInterface.windows[0]->close();
  delegate.applicationShouldHandleReopen();
  EXPECT_TRUE(userInterface.windows[0]->isInFront) << "the same one again";
  EXPECT_EQ(userInterface.windows.size(), 1U);
}

TEST_F(AppDelegateTest, DoesNothingWhenTheProgramIsStartedOnceMoreBeforeLaunchingHasFinished) {
  delegate.applicationShouldHandleReopen();
  EXPECT_TRUE(fakes.calls->all().empty());
  EXPECT_TRUE(userInterface.windows.empty());
}

TEST_F(AppDelegateTest, LaunchingAgainReplacesTheEngineItsHoldAndItsMenuBar) {
  delegate.applicationDidFinishLaunching();
  delegate.menuBar()->openApps();
  delegate.applicationDidFinishLaunching();
  EXPECT_FALSE(userInterface.windows[0]->isAlive);
  EXPECT_EQ(userInterface.menu, delegate.menuBar());
  EXPECT_EQ(fakes.power.live.size(), 1U);
  EXPECT_FALSE(fakes.mainLoop.timers[0]->valid);
  EXPECT_TRUE(fakes.mainLoop.timers[1]->valid);
}

TEST_F(AppDelegateTest, LaunchingAgainWithoutATerminalWritesNothingMore) {
  fakes.console.outputTerminal = true;
  fakes.power.granted = false;
  delegate.applicationDidFinishLaunching();
  const std::string written = fakes.console.output;
  fakes.console.outputTerminal = false;
  delegate.applicationDidFinishLaunching();
  for (int look = 0; look < 20; ++look)
    delegate.engine()->tick();
  EXPECT_EQ(userInterface.told.size(), 1U);
  EXPECT_EQ(fakes.console.output, written);
}

TEST_F(AppDelegateTest, TellsTheUserOnceAndTheTerminalThatNoServiceGrantsTheHold) {
  fakes.console.outputTerminal = true;
  fakes.power.granted = false;
  delegate.applicationDidFinishLaunching();
  for (int look = 0; look < 20; ++look)
    delegate.engine()->tick();
  EXPECT_EQ(fakes.calls->count("tell: The computer may fall asleep during the work"), 1U);
  EXPECT_EQ(userInterface.told, Texts{"No service of the system grants Staylit's hold."});
  EXPECT_EQ(fakes.console.output,
            "09:00:00  Work stopped \u2014 releasing in 120s\n"
            "09:00:00  No service of the system grants the hold \u2014 your Mac can sleep\n");
}

TEST_F(AppDelegateTest, TellsOnceOfSettingsThatDoNotCountAsTheyAreWritten) {
  fakes.console.outputTerminal = true;
  fakes.defaults.remarks = {"a", "b", "c", "d"};
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(userInterface.told,
            Texts{"a. b. c. And 1 more. The log and staylit --doctor have them all."});
  EXPECT_NE(fakes.console.output.find("  d\n"), std::string::npos) << fakes.console.output;
  const Texts logged = {"log a", "log b", "log c", "log d"};
  EXPECT_EQ(fakes.calls->only(logged), logged);
  delegate.engine()->tick();
  EXPECT_EQ(userInterface.told.size(), 1U);
}

TEST_F(AppDelegateTest, TellsTheTerminalAtOnceWhyNothingCanBeHeld) {
  fakes.console.outputTerminal = true;
  fakes.power.systemFailure = -13;
  fakes.power.why = "the service refuses";
  delegate.applicationDidFinishLaunching();
  EXPECT_TRUE(fakes.console.output.ends_with(
      "  Nothing can be held here: the service refuses. staylit --doctor says what to do\n"))
      << fakes.console.output;
  EXPECT_TRUE(userInterface.told.empty()) << "the service may be about to start";
  for (int tick = 0; tick < 6; ++tick)
    delegate.engine()->tick();
  EXPECT_EQ(userInterface.told,
            Texts{"No service of the system grants Staylit's hold: the service refuses."});
}

TEST_F(AppDelegateTest, HoldsTheLidAgainForAnEarlierProcessThatHeldIt) {
  fakes.useLidSwitch();
  fakes.defaults.setBoolean(keys::allowLidClosed, true);
  delegate.applicationDidFinishLaunching();
  EXPECT_TRUE(fakes.lidSwitch.isHeld());
}

TEST_F(AppDelegateTest, TellsTheUserWhenTheLidCannotBeHeldAgain) {
  fakes.useLidSwitch();
  fakes.lidSwitch.holdFailure = tidewell::LidSwitch::Failure{false, "the desktop handles it"};
  fakes.defaults.setBoolean(keys::allowLidClosed, true);
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(fakes.calls->count("tell: With its lid closed the computer will sleep"), 1U);
  EXPECT_EQ(userInterface.told,
            Texts{"\"Work with the lid closed\" could not be switched on again."});
}

TEST_F(AppDelegateTest, TellsNothingAboutALidThatIsTriedAgainUntilItIsLost) {
  fakes.useLidSwitch();
  fakes.lidSwitch.holdFailure = tidewell::LidSwitch::Failure{false, "nobody answers", true};
  fakes.defaults.setBoolean(keys::allowLidClosed, true);
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(fakes.calls->count("tell: With its lid closed the computer will sleep"), 0U);
  fakes.lidSwitch.become(false);
  EXPECT_EQ(fakes.calls->count("tell: With its lid closed the computer will sleep"), 1U);
}

TEST_F(AppDelegateTest, TellsTheUserWhenTheLidIsLostLater) {
  fakes.useLidSwitch();
  fakes.defaults.setBoolean(keys::allowLidClosed, true);
  delegate.applicationDidFinishLaunching();
  fakes.lidSwitch.become(false);
  fakes.lidSwitch.become(true);
  EXPECT_EQ(fakes.calls->count("tell: With its lid closed the computer will sleep"), 1U);
  EXPECT_EQ(userInterface.told, Texts{"\"Work with the lid closed\" is not in effect."});
}

TEST_F(AppDelegateTest, LeavesTheLidAloneWhileTheSettingIsOff) {
  fakes.useLidSwitch();
  delegate.applicationDidFinishLaunching();
  EXPECT_FALSE(fakes.lidSwitch.isHeld());
}

}  // namespace
}  // namespace staylit
