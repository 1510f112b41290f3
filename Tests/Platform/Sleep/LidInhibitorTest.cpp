#include "Platform/Linux/Sleep/LidInhibitor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Sleep/LogindSleepNotifications.h"

#include "Tests/Fakes/FakeMainLoop.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakeLogind.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using tidewell::LidSwitch;
using Lines = std::vector<std::string>;

constexpr const char* kLock = "handle-lid-switch|Staylit|Keeps working with the lid closed|block";

class LidInhibitorTest : public BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    lid = std::make_unique<LidInhibitor>(*systemBus, *loop);
    startLogind();
  }
  void TearDown() override { lid.reset(); }

  void startLogind() { logind = std::make_unique<FakeLogind>(systemDaemon->address()); }

  static std::string text(const std::optional<LidSwitch::Failure>& failed) {
    if (!failed) return {};
    return failed->wasDeclined ? "declined" : failed->description;
  }
  /// Why the lid cannot be held, if the user may be asked; empty when it can.
  std::string failure() {
    ask();
    EXPECT_TRUE(eventually([&] { return answer.has_value(); }));
    return answer.value_or("no answer");
  }
  /// Does the same; the result is in `answer` later on.
  void ask() {
    answer.reset();
    lid->holdAsking([this](const auto& failed) { answer = text(failed); });
  }

  tidewell::FakePorts ports;
  std::unique_ptr<FakeLogind> logind;
  std::unique_ptr<LidInhibitor> lid;
  std::optional<std::string> answer;
};

TEST_F(LidInhibitorTest, HoldsALockOfLogindUntilItIsReleased) {
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(logind->held(), Lines{kLock});
  EXPECT_FALSE(lid->release());
  EXPECT_TRUE(eventually([&] { return logind->held().empty(); }));
}

TEST_F(LidInhibitorTest, HoldsAtMostOneLock) {
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(logind->granted(), Lines{kLock});
}

TEST_F(LidInhibitorTest, MayBeReleasedWithoutBeingHeld) {
  EXPECT_FALSE(lid->release());
  EXPECT_EQ(logind->granted(), Lines{});
}

TEST_F(LidInhibitorTest, CanBeHeldAgainAfterItsRelease) {
  EXPECT_EQ(failure(), "");
  lid->release();
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(logind->held(), Lines{kLock});
}

TEST_F(LidInhibitorTest, DoesNotAskTheUserWhenThePolicyAllowsTheLock) {
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(logind->prompts, 0);
}

TEST_F(LidInhibitorTest, IsHeldOnceTheUserHasApproved) {
  logind->approval = FakeLogind::Approval::given;
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(logind->prompts, 1);
  EXPECT_EQ(logind->held(), Lines{kLock});
}

TEST_F(LidInhibitorTest, TellsADismissedPromptFromARefusalByPolicy) {
  logind->approval = FakeLogind::Approval::declined;
  EXPECT_EQ(failure(), "declined");
  EXPECT_EQ(lid->lastFailure(), "") << "the user knows";
  EXPECT_EQ(logind->prompts, 1);
  logind->refuses = true;
  EXPECT_EQ(failure(), "the system's policy does not allow it");
  EXPECT_EQ(lid->lastFailure(), "the system's policy does not allow it");
  EXPECT_FALSE(lid->release());
  EXPECT_EQ(lid->lastFailure(), "the system's policy does not allow it") << "a flip back";
  EXPECT_EQ(logind->prompts, 1);
}

TEST_F(LidInhibitorTest, SaysThatNobodyCanAskForTheApproval) {
  logind->approval = FakeLogind::Approval::nobodyToAsk;
  EXPECT_EQ(failure(), "it needs an administrator's approval, and nothing here can ask for that");
}

TEST_F(LidInhibitorTest, AsksTheUserOnlyWhenItMay) {
  logind->approval = FakeLogind::Approval::given;
  EXPECT_EQ(text(lid->hold()),
            "it needs an administrator's approval, and nothing here can ask for that");
  EXPECT_EQ(text(lid->resume()),
            "it needs an administrator's approval, and nothing here can ask for that");
  EXPECT_EQ(logind->prompts, 0);
}

/// The user has been asked and has not answered yet.
class LidPromptTest : public LidInhibitorTest {
 protected:
  void SetUp() override {
    LidInhibitorTest::SetUp();
    if (IsSkipped()) return;
    logind->approval = FakeLogind::Approval::given;
    logind->isUserThinking = true;
    ask();
    ASSERT_TRUE(eventually([&] { return logind->waiting() == 1; }));
  }
};

TEST_F(LidPromptTest, DoesNotBlockTheLoopHoweverLongTheUserTakes) {
  bool isSleepAnnounced = false;
  int timersFired = 0;
  LogindSleepNotifications notifications(*systemBus, *loop);
  notifications.observe([&] { isSleepAnnounced = true; }, [] {});
  const auto timer = loop->scheduleRepeating(std::chrono::milliseconds(10), [&] { ++timersFired; });
  ASSERT_TRUE(eventually([&] { return timersFired > 2; }));
  logind->announceSleep(true);
  EXPECT_TRUE(eventually([&] { return isSleepAnnounced; }));
  EXPECT_FALSE(answer);
  EXPECT_FALSE(lid->holds());
  logind->answerLate();
  EXPECT_TRUE(eventually([&] { return answer.has_value(); }));
  EXPECT_EQ(answer, "");
  EXPECT_TRUE(lid->holds());
}

TEST_F(LidPromptTest, IsForgottenByARelease) {
  lid->release();
  logind->answerLate();
  EXPECT_TRUE(eventually([&] { return logind->granted().size() == 1 && logind->held().empty(); }));
  EXPECT_FALSE(answer);
  EXPECT_FALSE(lid->holds());
}

TEST_F(LidPromptTest, IsReplacedByALaterOneWhoseAnswerCounts) {
  ask();
  ASSERT_TRUE(eventually([&] { return logind->waiting() == 2; }));
  logind->answerLate();
  EXPECT_TRUE(eventually([&] { return answer.has_value(); }));
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{kLock}; }));
  EXPECT_EQ(logind->granted().size(), 2U);
}

TEST_F(LidPromptTest, FailsWhenLogindGoes) {
  logind.reset();
  EXPECT_TRUE(eventually([&] { return answer.has_value(); }));
  EXPECT_EQ(answer->substr(0, 24), "logind cannot be asked: ");
  EXPECT_FALSE(lid->holds());
}

TEST_F(LidPromptTest, FailsWhenTheBusGoes) {
  systemDaemon->stop();
  EXPECT_TRUE(eventually([&] { return answer.has_value(); }));
  EXPECT_FALSE(lid->holds());
}

TEST_F(LidPromptTest, EndsWithItsOwner) {
  lid.reset();
  logind->answerLate();
  EXPECT_TRUE(eventually([&] { return logind->granted().size() == 1 && logind->held().empty(); }));
  EXPECT_FALSE(answer);
}

TEST_F(LidInhibitorTest, SaysWhyLogindCannotBeAsked) {
  logind.reset();
  EXPECT_EQ(failure().substr(0, 24), "logind cannot be asked: ");
}

TEST_F(LidInhibitorTest, LeavesTheLidToADesktopThatHandlesIt) {
  logind->list({{"handle-power-key:handle-lid-switch", "PowerDevil", "KDE handles power events",
                 "block", 1000, 4711}});
  EXPECT_EQ(failure(),
            "the desktop (PowerDevil) handles the lid itself: choose in its own settings what "
            "closing the lid does");
  EXPECT_EQ(logind->granted(), Lines{});
}

TEST_F(LidInhibitorTest, NamesMateWhichLocksTheLidUnderTheUsersName) {
  logind->list({{"handle-power-key:handle-suspend-key:handle-lid-switch", "somebody",
                 "Mate power manager handles these events", "block", 1000, 4711}});
  EXPECT_EQ(failure(),
            "the desktop (mate-power-manager) handles the lid itself: choose in its own settings "
            "what closing the lid does");
}

TEST_F(LidInhibitorTest, IgnoresLocksThatLeaveTheLidAlone) {
  logind->list({{"handle-power-key:handle-suspend-key", "gsd-media-keys", "keys", "block", 1, 1},
                {"handle-power-key:handle-lid-switch", "a", "b", "delay", 1, 1},
                {"sleep", "NetworkManager", "turns off networks", "delay", 0, 1}});
  EXPECT_EQ(failure(), "");
}

TEST_F(LidInhibitorTest, IsHeldEvenWhileADesktopLocksTheLidForAnotherScreen) {
  logind->list(
      {{"handle-lid-switch", "somebody", "Multiple displays attached", "block", 1000, 4711}});
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(logind->held(), Lines{kLock});
}

TEST_F(LidInhibitorTest, LeavesTheLidToXfceEvenIfLogindHandlesItsKeys) {
  logind->list({{"handle-lid-switch", "xfce4-power-manager", "", "block", 1000, 4711}});
  EXPECT_EQ(failure(),
            "the desktop (xfce4-power-manager) handles the lid itself: choose in its own settings "
            "what closing the lid does");
}

TEST_F(LidInhibitorTest, LeavesTheLidToLxqtWhichLocksEachKeyByItself) {
  logind->list({{"handle-power-key", "lxqt-powermanager", "", "block", 1000, 4711},
                {"handle-lid-switch", "lxqt-powermanagment", "", "block", 1000, 4711}});
  EXPECT_EQ(failure(),
            "the desktop (lxqt-powermanagment) handles the lid itself: choose in its own settings "
            "what closing the lid does");
}

TEST_F(LidInhibitorTest, LeavesItToLogindWhereLxqtLocksItsKeysAlone) {
  logind->list({{"handle-power-key", "lxqt-powermanager", "", "block", 1000, 4711}});
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(logind->held(), Lines{kLock});
}

TEST_F(LidInhibitorTest, IsTakenAgainWhenLogindRestarts) {
  EXPECT_EQ(failure(), "");
  logind.reset();
  startLogind();
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{kLock}; }));
}

TEST_F(LidInhibitorTest, IsNotTakenAgainAfterItsRelease) {
  EXPECT_EQ(failure(), "");
  lid->release();
  logind.reset();
  startLogind();
  bool isBack = false;
  const auto watch =
      systemBus->watchName("org.freedesktop.login1", [&](bool owned) { isBack = owned; });
  ASSERT_TRUE(eventually([&] { return isBack; }));
  runBriefly(*loop);
  EXPECT_EQ(logind->granted(), Lines{});
}

TEST_F(LidInhibitorTest, ReportsThatARestartedLogindRefuses) {
  EXPECT_EQ(failure(), "");
  logind.reset();
  logind = std::make_unique<FakeLogind>(systemDaemon->address(), FakeLogind::Approval::given);
  EXPECT_TRUE(eventually([&] { return !ports.log.lines().empty(); }));
  EXPECT_EQ(ports.log.lines(),
            Lines{"error: the lid is no longer held: it needs an administrator's approval, and "
                  "nothing here can ask for that"});
}

/// The lid's inhibitor on a loop whose timers the test fires.
class LidRetryTest : public LidInhibitorTest {
 protected:
  void SetUp() override {
    LidInhibitorTest::SetUp();
    if (IsSkipped()) return;
    lid = std::make_unique<LidInhibitor>(*systemBus, timers);
    changes_ = lid->observe([this](bool holds) { told.push_back(holds); });
    // After a call without an answer, the bus pauses for a moment.
    ASSERT_TRUE(eventually([this] { return systemBus->connect() == 0; }));
  }
  /// Lets the pause pass and fires the timer.
  void retry() {
    runBriefly(*loop);
    timers.fireTimers();
  }

  tidewell::FakeMainLoop timers;
  std::vector<bool> told;

 private:
  std::shared_ptr<void> changes_;
};

TEST_F(LidRetryTest, IsTriedAgainWhenNobodyAnsweredAtTheResumption) {
  logind->isSilent = true;
  const auto failed = lid->resume();
  ASSERT_TRUE(failed);
  EXPECT_TRUE(failed->isTriedAgain);
  EXPECT_FALSE(lid->holds());
  logind->isSilent = false;
  retry();
  EXPECT_TRUE(lid->holds());
  EXPECT_EQ(told, std::vector<bool>{true});
  EXPECT_EQ(logind->held(), Lines{kLock});
  EXPECT_EQ(ports.log.lines(), Lines{"info: clamshell sleep disabled"});
}

TEST_F(LidRetryTest, ASecondFailedAttemptIsReported) {
  logind->isSilent = true;
  EXPECT_FALSE(lid->isTriedAgain());
  ASSERT_TRUE(lid->resume());
  EXPECT_TRUE(lid->isTriedAgain());
  retry();
  EXPECT_EQ(told, std::vector<bool>{false});
  EXPECT_TRUE(lid->isTriedAgain());
  retry();
  EXPECT_EQ(told, std::vector<bool>{false}) << "once";
  EXPECT_EQ(
      ports.log.lines(),
      Lines{"error: the lid could not be held: logind cannot be asked: Connection timed out"});
  logind->isSilent = false;
  retry();
  EXPECT_EQ(told, (std::vector<bool>{false, true}));
  EXPECT_TRUE(lid->holds());
  EXPECT_FALSE(lid->isTriedAgain());
}

TEST_F(LidRetryTest, AHoldThatIsFoundOnLogindsListAfterItsLossIsReported) {
  ASSERT_FALSE(lid->hold());
  logind.reset();
  startLogind();
  logind->isSilent = true;
  ASSERT_TRUE(eventually([&] { return !timers.timers.empty(); }));
  retry();
  ASSERT_EQ(told, std::vector<bool>{false});
  logind->isSilent = false;
  logind->refuses = true;
  logind->list(
      {{"handle-lid-switch", "Staylit", "Keeps working with the lid closed", "block", 1000, 4711}});
  retry();
  EXPECT_EQ(told, (std::vector<bool>{false, true}));
  EXPECT_TRUE(lid->holds());
}

TEST_F(LidRetryTest, TheLockOfAnotherProgramDoesNotCountAsItsOwn) {
  ASSERT_FALSE(lid->hold());
  logind.reset();
  startLogind();
  logind->refuses = true;
  logind->list(
      {{"handle-lid-switch", "somebody", "Multiple displays attached", "block", 1000, 4711}});
  EXPECT_TRUE(eventually([&] { return !told.empty(); }));
  EXPECT_EQ(told, std::vector<bool>{false});
  EXPECT_FALSE(lid->holds());
}

TEST_F(LidRetryTest, ARefusedResumptionIsNotTriedAgain) {
  logind->refuses = true;
  const auto failed = lid->resume();
  ASSERT_TRUE(failed);
  EXPECT_FALSE(failed->isTriedAgain);
  EXPECT_TRUE(timers.timers.empty());
}

TEST_F(LidRetryTest, AReleaseEndsTheAttempts) {
  logind->isSilent = true;
  ASSERT_TRUE(lid->resume());
  lid->release();
  EXPECT_FALSE(lid->isTriedAgain());
  logind->isSilent = false;
  retry();
  EXPECT_EQ(logind->held(), Lines{});
  EXPECT_EQ(told, std::vector<bool>{});
}

TEST_F(LidRetryTest, AHoldThatARestartedLogindRefusesIsReportedAsLost) {
  ASSERT_FALSE(lid->hold());
  logind.reset();
  logind = std::make_unique<FakeLogind>(systemDaemon->address(), FakeLogind::Approval::given);
  EXPECT_TRUE(eventually([&] { return !told.empty(); }));
  EXPECT_EQ(told, std::vector<bool>{false});
  EXPECT_FALSE(lid->holds());
}

}  // namespace
}  // namespace platform
