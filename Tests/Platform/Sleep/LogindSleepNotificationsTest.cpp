#include "Platform/Linux/Sleep/LogindSleepNotifications.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakeLogind.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names
using Lines = std::vector<std::string>;

const std::string kDelayLock = "sleep|Staylit|Lets go of its holds before sleep|delay";

class SleepNotificationsTest : public BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (IsSkipped()) return;
    logind = std::make_unique<FakeLogind>(systemDaemon->address());
    notifications = std::make_unique<LogindSleepNotifications>(*systemBus, *loop);
  }

  void observe() {
    notifications->observe([this] { log += "sleep "; }, [this] { log += "wake "; });
  }

  std::string log;
  std::unique_ptr<FakeLogind> logind;
  std::unique_ptr<LogindSleepNotifications> notifications;
};

TEST_F(SleepNotificationsTest, TakeTheLockWithTheFirstObserver) {
  runBriefly(*loop);
  EXPECT_EQ(logind->granted(), Lines{});
  observe();
  EXPECT_EQ(logind->held(), Lines{kDelayLock});
  observe();
  runBriefly(*loop);
  EXPECT_EQ(logind->granted(), Lines{kDelayLock});
}

TEST_F(SleepNotificationsTest, TellEveryObserverOfSleepAndWake) {
  observe();
  observe();
  logind->announceSleep(true);
  EXPECT_TRUE(eventually([&] { return log == "sleep sleep "; }));
  logind->announceSleep(false);
  EXPECT_TRUE(eventually([&] { return log == "sleep sleep wake wake "; }));
}

TEST_F(SleepNotificationsTest, LetSleepComeOnlyAfterTheWorkThatAnObserverPosted) {
  std::size_t heldWhilePosted = 0;
  notifications->observe(
      [&] {
        loop->async([&] {
          heldWhilePosted = logind->held().size();
          log += "released ";
        });
      },
      [] {});
  logind->announceSleep(true);
  EXPECT_TRUE(eventually([&] { return logind->held().empty(); }));
  EXPECT_EQ(log, "released ");
  EXPECT_EQ(heldWhilePosted, 1U);
}

TEST_F(SleepNotificationsTest, TakeTheLockAgainAfterEachWake) {
  observe();
  for (std::size_t cycle = 1; cycle <= 3; ++cycle) {
    logind->announceSleep(true);
    ASSERT_TRUE(eventually([&] { return logind->held().empty(); }));
    logind->announceSleep(false);
    ASSERT_TRUE(eventually([&] { return logind->held() == Lines{kDelayLock}; }));
    ASSERT_EQ(logind->granted().size(), cycle + 1);
  }
  EXPECT_TRUE(eventually([&] { return log == "sleep wake sleep wake sleep wake "; }));
}

TEST_F(SleepNotificationsTest, TakeTheLockAgainWhenLogindRestarted) {
  observe();
  ASSERT_EQ(logind->held(), Lines{kDelayLock});
  logind.reset();
  logind = std::make_unique<FakeLogind>(systemDaemon->address());
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{kDelayLock}; }));
  logind->announceSleep(true);
  EXPECT_TRUE(eventually([&] { return log == "sleep " && logind->held().empty(); }));
}

TEST_F(SleepNotificationsTest, TakeTheLockWhenLogindAppearsAfterTheObserver) {
  logind.reset();
  observe();
  logind = std::make_unique<FakeLogind>(systemDaemon->address());
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{kDelayLock}; }));
}

TEST_F(SleepNotificationsTest, TellTheObserverEvenIfTheLockIsRefused) {
  logind->refuses = true;
  observe();
  logind->announceSleep(true);
  EXPECT_TRUE(eventually([&] { return log == "sleep "; }));
  logind->announceSleep(false);
  EXPECT_TRUE(eventually([&] { return log == "sleep wake "; }));
}

TEST_F(SleepNotificationsTest, KeepALockThatIsGrantedLate) {
  logind->isSilent = true;
  observe();
  logind->answerLate();
  runBriefly(*loop);
  EXPECT_EQ(logind->held(), Lines{kDelayLock});
}

TEST_F(SleepNotificationsTest, AskAgainForALockWhenNobodyAnswered) {
  logind->isSilent = true;
  observe();
  logind->isSilent = false;
  EXPECT_TRUE(eventually([&] { return logind->held() == Lines{kDelayLock}; }));
}

TEST_F(SleepNotificationsTest, GiveTheLockBackWhenTheyAreDestroyed) {
  observe();
  notifications.reset();
  EXPECT_TRUE(eventually([&] { return logind->held().empty(); }));
}

}  // namespace
}  // namespace platform
