#include "Tidewell/SleepController.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace tidewell {
namespace {

using Texts = std::vector<std::string>;

class SleepControllerTest : public testing::Test {
 protected:
  FakePorts fakes;
  SleepController sleep{fakes.power};
};

TEST_F(SleepControllerTest, HoldsNothingAtFirst) {
  EXPECT_FALSE(sleep.isHolding());
  EXPECT_TRUE(fakes.power.calls.empty());
}

TEST_F(SleepControllerTest, TakesASystemAssertionNamedAfterTheReason) {
  sleep.hold("R", false);
  EXPECT_TRUE(sleep.isHolding());
  ASSERT_EQ(fakes.power.live.size(), 1U);
  EXPECT_EQ(fakes.power.live.at(1), (FakePowerManagement::Assertion{AssertionKind::system, "R"}));
  EXPECT_EQ(fakes.log.lines(), Texts{"info: holding sleep \u2014 R"});
}

TEST_F(SleepControllerTest, HoldingTwiceForTheSameReasonTakesAndLogsOnce) {
  sleep.hold("R", false);
  sleep.hold("R", false);
  EXPECT_EQ(fakes.power.calls, Texts{"create system 'R'"});
  EXPECT_EQ(fakes.log.lines(), Texts{"info: holding sleep \u2014 R"});
}

TEST_F(SleepControllerTest, ANewReasonRenamesTheLiveAssertionSilently) {
  sleep.hold("R1", false);
  sleep.hold("R2", false);
  EXPECT_EQ(fakes.power.calls, (Texts{"create system 'R1'", "rename 1 'R2'"}));
  EXPECT_EQ(fakes.power.live.at(1).name, "R2");
  EXPECT_EQ(fakes.log.lines(), Texts{"info: holding sleep \u2014 R1"});
}

TEST_F(SleepControllerTest, ReasonsThatDifferInCaseOnlyAreNotTheSame) {
  sleep.hold("r", false);
  sleep.hold("R", false);
  EXPECT_EQ(fakes.power.live.at(1).name, "R");
}

TEST_F(SleepControllerTest, ADisplayAssertionFollowsTheSettingWhileHolding) {
  sleep.hold("R1", false);
  sleep.hold("R1", true);
  ASSERT_EQ(fakes.power.live.size(), 2U);
  EXPECT_EQ(fakes.power.live.at(2), (FakePowerManagement::Assertion{AssertionKind::display, "R1"}));
}

TEST_F(SleepControllerTest, TheDisplayAssertionKeepsTheNameItWasCreatedWith) {
  sleep.hold("R1", false);
  sleep.hold("R1", true);
  sleep.hold("R2", true);
  EXPECT_EQ(fakes.power.liveNames(), (Texts{"R2", "R1"}));
  EXPECT_EQ(fakes.power.calls,
            (Texts{"create system 'R1'", "create display 'R1'", "rename 1 'R2'"}));
}

TEST_F(SleepControllerTest, ADisplayAssertionThatComesWithANewReasonCarriesTheNewOne) {
  sleep.hold("R1", false);
  sleep.hold("R2", true);
  EXPECT_EQ(fakes.power.calls,
            (Texts{"create system 'R1'", "rename 1 'R2'", "create display 'R2'"}));
}

TEST_F(SleepControllerTest, SwitchingTheScreenOffReleasesTheDisplayAssertionOnly) {
  sleep.hold("R", true);
  sleep.hold("R", false);
  EXPECT_EQ(fakes.power.calls, (Texts{"create system 'R'", "create display 'R'", "release 2"}));
  EXPECT_TRUE(sleep.isHolding());
  sleep.hold("R", false);
  EXPECT_EQ(fakes.power.calls.size(), 3U) << "what is released is not released again";
}

TEST_F(SleepControllerTest, TakesBothAssertionsBeforeItLogsTheHold) {
  const Texts inOrder = {"create system 'R'", "create display 'R'", "log holding sleep \u2014 R"};
  sleep.hold("R", true);
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
}

TEST_F(SleepControllerTest, ReleasesBothAssertionsBeforeItLogsTheRelease) {
  const Texts inOrder = {"release 1", "release 2", "log released sleep hold"};
  sleep.hold("R", true);
  sleep.release();
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
}

TEST_F(SleepControllerTest, ReleasingWhenNothingIsHeldDoesNothing) {
  sleep.release();
  EXPECT_TRUE(fakes.power.calls.empty());
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(SleepControllerTest, ReleasesTheSystemAssertionThenTheDisplayOne) {
  sleep.hold("R", true);
  sleep.release();
  EXPECT_EQ(fakes.power.calls,
            (Texts{"create system 'R'", "create display 'R'", "release 1", "release 2"}));
  EXPECT_FALSE(sleep.isHolding());
  EXPECT_TRUE(fakes.power.live.empty());
}

TEST_F(SleepControllerTest, LogsAReleaseOnce) {
  sleep.hold("R", false);
  sleep.release();
  sleep.release();
  EXPECT_EQ(fakes.log.lines(),
            (Texts{"info: holding sleep \u2014 R", "info: released sleep hold"}));
  EXPECT_EQ(fakes.power.calls, (Texts{"create system 'R'", "release 1"}));
}

TEST_F(SleepControllerTest, TakesANewAssertionAfterARelease) {
  sleep.hold("R", true);
  sleep.release();
  sleep.hold("R", true);
  EXPECT_EQ(fakes.power.live.size(), 2U);
  EXPECT_TRUE(fakes.power.live.contains(3));
  EXPECT_TRUE(fakes.power.live.contains(4));
  EXPECT_EQ(fakes.log.lines().back(), "info: holding sleep \u2014 R");
}

TEST_F(SleepControllerTest, LogsTheCodeOfAFailedCreationAndTriesAgainNextTime) {
  fakes.power.systemFailure = -536870206;
  sleep.hold("R", true);
  EXPECT_FALSE(sleep.isHolding());
  EXPECT_EQ(fakes.power.calls, Texts{"create system 'R'"})
      << "without a system assertion there is no display assertion";
  EXPECT_EQ(fakes.log.lines(), Texts{"error: failed to create sleep assertion: -536870206"});

  fakes.power.systemFailure = 0;
  sleep.hold("R", true);
  EXPECT_TRUE(sleep.isHolding());
  EXPECT_EQ(fakes.power.live.size(), 2U);
}

TEST_F(SleepControllerTest, LogsEveryFailedCreation) {
  fakes.power.systemFailure = 5;
  sleep.hold("R", false);
  sleep.hold("R", false);
  EXPECT_EQ(fakes.log.lines(), (Texts{"error: failed to create sleep assertion: 5",
                                      "error: failed to create sleep assertion: 5"}));
}

TEST_F(SleepControllerTest, ReleasingAfterAFailedCreationDoesNothing) {
  fakes.power.systemFailure = 5;
  sleep.hold("R", false);
  sleep.release();
  EXPECT_EQ(fakes.power.calls, Texts{"create system 'R'"});
  EXPECT_EQ(fakes.log.lines().size(), 1U);
}

TEST_F(SleepControllerTest, HoldsOnSilentlyWithoutADisplayAssertionAndTriesItAgain) {
  fakes.power.displayFailure = 7;
  sleep.hold("R", true);
  EXPECT_TRUE(sleep.isHolding());
  EXPECT_EQ(fakes.log.lines(), Texts{"info: holding sleep \u2014 R"});
  fakes.power.displayFailure = 0;
  sleep.hold("R", true);
  EXPECT_EQ(fakes.power.live.size(), 2U);
  EXPECT_EQ(fakes.log.lines().size(), 1U);
}

TEST(SleepController, GivesEverythingBackWhenItIsDestroyed) {
  FakePorts fakes;
  {
    SleepController sleep(fakes.power);
    sleep.hold("R", true);
  }
  EXPECT_TRUE(fakes.power.live.empty());
  EXPECT_EQ(fakes.log.lines().back(), "info: released sleep hold");
}

TEST(SleepController, MakesNoCallWhenItIsDestroyedHoldingNothing) {
  FakePorts fakes;
  { const SleepController sleep(fakes.power); }
  EXPECT_TRUE(fakes.power.calls.empty());
  EXPECT_TRUE(fakes.log.lines().empty());
}

}  // namespace
}  // namespace tidewell
