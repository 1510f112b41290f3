#include "Platform/Linux/Sleep/LidInhibitor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Tests/Fakes/FakeMainLoop.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakeLogind.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using tidewell::LidSwitch;
using Lines = std::vector<std::string>;

constexpr auto kMayAsk = LidSwitch::Approval::mayBeAsked;
constexpr auto kMayNotAsk = LidSwitch::Approval::mustBeGiven;
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

  /// Why the lid cannot be held; empty when it can.
  std::string failure(LidSwitch::Approval approval = kMayAsk) {
    const auto failed = lid->hold(approval);
    if (!failed) return {};
    return failed->wasDeclined ? "declined" : failed->description;
  }

  tidewell::FakePorts ports;
  std::unique_ptr<FakeLogind> logind;
  std::unique_ptr<LidInhibitor> lid;
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

TEST_F(LidInhibitorTest, ReleasesWhatIsNotHeld) {
  EXPECT_FALSE(lid->release());
  EXPECT_EQ(logind->granted(), Lines{});
}

TEST_F(LidInhibitorTest, CanBeHeldAgainAfterItsRelease) {
  EXPECT_EQ(failure(), "");
  lid->release();
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(logind->held(), Lines{kLock});
}

TEST_F(LidInhibitorTest, DoesNotAskTheUserWhereThePolicyLetsItBe) {
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(logind->prompts, 0);
}

TEST_F(LidInhibitorTest, IsHeldOnceTheUserHasApproved) {
  logind->approval = FakeLogind::Approval::given;
  EXPECT_EQ(failure(), "");
  EXPECT_EQ(logind->prompts, 1);
  EXPECT_EQ(logind->held(), Lines{kLock});
}

TEST_F(LidInhibitorTest, TellsADismissedPromptFromAPolicy) {
  logind->approval = FakeLogind::Approval::declined;
  EXPECT_EQ(failure(), "declined");
  EXPECT_EQ(logind->prompts, 1);
  logind->refuses = true;
  EXPECT_EQ(failure(), "the system's policy does not allow it");
  EXPECT_EQ(logind->prompts, 1);
}

TEST_F(LidInhibitorTest, SaysThatNobodyCanAskForTheApproval) {
  logind->approval = FakeLogind::Approval::nobodyToAsk;
  EXPECT_EQ(failure(), "it needs an administrator's approval, and nothing here can ask for that");
}

TEST_F(LidInhibitorTest, AsksNobodyUnlessItMay) {
  logind->approval = FakeLogind::Approval::given;
  EXPECT_EQ(failure(kMayNotAsk),
            "it needs an administrator's approval, and nothing here can ask for that");
  EXPECT_EQ(logind->prompts, 0);
}

TEST_F(LidInhibitorTest, WaitsForTheUserLongerThanForAService) {
  BusTiming timing = impatient();
  timing.callLimit = std::chrono::milliseconds(50);
  Bus hasty(*loop, Bus::Kind::system, timing);
  ASSERT_TRUE(eventually([&] { return hasty.connect() == 0; }));
  logind->isSilent = true;
  std::thread user([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    logind->answerLate();
  });
  const LogindLock lock =
      takeLogindLock(hasty, "handle-lid-switch", "why", "block", {}, BusApproval::mayBeAsked);
  user.join();
  EXPECT_EQ(lock.error, 0);
  EXPECT_TRUE(lock.descriptor);
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

TEST_F(LidInhibitorTest, DoesNotMindLocksThatLeaveTheLidAlone) {
  logind->list({{"handle-power-key:handle-suspend-key", "gsd-media-keys", "keys", "block", 1, 1},
                {"handle-power-key:handle-lid-switch", "a", "b", "delay", 1, 1},
                {"sleep", "NetworkManager", "turns off networks", "delay", 0, 1}});
  EXPECT_EQ(failure(), "");
}

TEST_F(LidInhibitorTest, IsHeldAsWellWhileADesktopKeepsTheLidFromSleepForAnotherScreen) {
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

TEST_F(LidInhibitorTest, IsTakenAgainWhenLogindRestarts) {
  EXPECT_EQ(failure(), "");
  logind.reset();
  startLogind();
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{kLock}; }));
}

TEST_F(LidInhibitorTest, IsNotTakenAgainOnceItIsReleased) {
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

TEST_F(LidInhibitorTest, SaysSoWhenARestartedLogindRefuses) {
  EXPECT_EQ(failure(), "");
  logind.reset();
  logind = std::make_unique<FakeLogind>(systemDaemon->address(), FakeLogind::Approval::given);
  EXPECT_TRUE(eventually([&] { return !ports.log.lines().empty(); }));
  EXPECT_EQ(ports.log.lines(),
            Lines{"error: the lid is no longer held: it needs an administrator's approval, and "
                  "nothing here can ask for that"});
}

}  // namespace
}  // namespace platform
