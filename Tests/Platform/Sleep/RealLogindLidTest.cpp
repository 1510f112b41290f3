// Tests the hold on the lid with the machine's own logind.

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Sleep/LidInhibitor.h"
#include "Platform/Linux/Sleep/LogindList.h"
#include "Platform/Linux/Sleep/LogindLock.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/RealLogind.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names

class RealLogindLidTest : public BusTest {
 protected:
  void SetUp() override {
    if (const auto obstacle = RealLogind::obstacle()) GTEST_SKIP() << *obstacle;
    BusTest::SetUp();
    if (IsSkipped()) return;
    observer = std::make_unique<Bus>(*loop, Bus::Kind::system, impatient());
    logind = std::make_unique<RealLogind>();
    ASSERT_TRUE(eventually([&] { return listLogindInhibitors(*observer).has_value(); }));
    lid = std::make_unique<LidInhibitor>(*systemBus, *loop);
  }
  void TearDown() override {
    lid.reset();
    observer.reset();
  }

  /// How many locks on the lid logind lists.
  int locks() {
    const auto listed = listLogindInhibitors(*observer);
    if (!listed) return -1;
    int count = 0;
    for (const ListedInhibitor& inhibitor : *listed)
      count += namesLock(inhibitor.locks, "handle-lid-switch") ? 1 : 0;
    return count;
  }

  tidewell::FakePorts ports;
  std::unique_ptr<Bus> observer;  ///< The client under test has a connection of its own.
  std::unique_ptr<RealLogind> logind;
  std::unique_ptr<LidInhibitor> lid;
};

TEST_F(RealLogindLidTest, ListsTheHoldAndForgetsItOnRelease) {
  EXPECT_FALSE(lid->isHeld());
  ASSERT_FALSE(lid->hold());
  EXPECT_TRUE(lid->isHeld());
  const auto listed = listLogindInhibitors(*observer);
  ASSERT_TRUE(listed);
  ASSERT_EQ(listed->size(), 1U);
  EXPECT_EQ(listed->front().locks, "handle-lid-switch");
  EXPECT_EQ(listed->front().level, 255);
  EXPECT_EQ(listed->front().holder, "Staylit");
  EXPECT_EQ(listed->front().why, "Keeps working with the lid closed");
  EXPECT_EQ(listed->front().processIdentifier, ::getpid());
  lid->release();
  EXPECT_TRUE(eventually([&] { return !lid->isHeld(); }));
  EXPECT_EQ(locks(), 0);
}

TEST_F(RealLogindLidTest, IsNotAmongTheRequestsToStayAwake) {
  ASSERT_FALSE(lid->hold());
  const auto listed = listLogindInhibitors(*observer);
  ASSERT_TRUE(listed);
  ASSERT_EQ(listed->size(), 1U);
  EXPECT_TRUE(listed->front().types.empty());
}

TEST_F(RealLogindLidTest, SeesTheLockOfAnotherProgram) {
  LogindLock other = takeLogindLock(*observer, "handle-lid-switch", "why", "block");
  ASSERT_TRUE(other.descriptor);
  EXPECT_TRUE(lid->isHeld());
  other.descriptor.reset();
  EXPECT_TRUE(eventually([&] { return !lid->isHeld(); }));
}

TEST_F(RealLogindLidTest, LeavesTheLidToADesktopThatHandlesIt) {
  const LogindLock desktop = takeLogindLock(
      *observer, "handle-power-key:handle-suspend-key:handle-lid-switch", "why", "block");
  ASSERT_TRUE(desktop.descriptor) << desktop.errorName;
  const auto failure = lid->hold();
  ASSERT_TRUE(failure);
  EXPECT_FALSE(failure->wasDeclined);
  EXPECT_EQ(failure->description.substr(0, 45), "the desktop (Staylit) handles the lid itself:");
  EXPECT_EQ(locks(), 1);
}

TEST_F(RealLogindLidTest, IsHeldOnceAfterLogindRestarted) {
  ASSERT_FALSE(lid->hold());
  logind->stop();
  runBriefly(*loop);
  logind->start();
  EXPECT_TRUE(eventually([&] { return lid->isHeld() && locks() == 1; }));
  runBriefly(*loop);
  EXPECT_EQ(locks(), 1);
}

TEST_F(RealLogindLidTest, IsHeldAgainAfterLogindForgotEverything) {
  ASSERT_FALSE(lid->hold());
  logind->stop();
  logind->forget();
  runBriefly(*loop);
  logind->start();
  EXPECT_TRUE(eventually([&] { return lid->isHeld() && locks() == 1; }));
}

TEST_F(RealLogindLidTest, EndsWithTheProcessHoweverTheProcessEnds) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  ChildProgram child({"unused"}, [&] {
    EventLoop childLoop;
    Bus system(childLoop, Bus::Kind::system);
    LidInhibitor childLid(system, childLoop);
    const bool isHeld = !childLid.hold();
    if (isHeld && ::write(ends[1], "x", 1) == 1) ::pause();
    return false;
  });
  ::close(ends[1]);
  char ready = 0;
  ASSERT_EQ(::read(ends[0], &ready, 1), 1);
  EXPECT_EQ(locks(), 1);
  child.kill();
  EXPECT_TRUE(eventually([&] { return locks() == 0; }));
  ::close(ends[0]);
}

}  // namespace
}  // namespace platform
