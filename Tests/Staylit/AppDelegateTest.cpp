#include "Staylit/AppDelegate.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace staylit {
namespace {

using Texts = std::vector<std::string>;

class AppDelegateTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(setenv("TZ", "UTC0", 1), 0); }

  tidewell::FakePorts fakes;
  AppDelegate delegate{fakes.ports};
};

TEST_F(AppDelegateTest, HasNoEngineBeforeLaunchingHasFinished) {
  EXPECT_EQ(delegate.engine(), nullptr);
  EXPECT_TRUE(fakes.calls->all().empty());
}

TEST_F(AppDelegateTest, StartsTheEngineAndThenLogsThatStaylitStarted) {
  const Texts inOrder = {"observe sleep and wake", "schedule timer", "list processes",
                         "log Staylit started"};
  delegate.applicationDidFinishLaunching();
  ASSERT_NE(delegate.engine(), nullptr);
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
  EXPECT_EQ(fakes.log.lines().back(), "info: Staylit started");
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

TEST_F(AppDelegateTest, LaunchingAgainReplacesTheEngineAndItsHold) {
  delegate.applicationDidFinishLaunching();
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(fakes.power.live.size(), 1U);
  EXPECT_FALSE(fakes.mainLoop.timers[0]->valid);
  EXPECT_TRUE(fakes.mainLoop.timers[1]->valid);
}

}  // namespace
}  // namespace staylit
