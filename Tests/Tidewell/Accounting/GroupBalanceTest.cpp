// What the kernel tells no parent is found in the time of the control group.

#include "Tidewell/Accounting/GroupBalance.h"

#include <gtest/gtest.h>

#include <string>

#include "Tests/Tidewell/Accounting/ConservedTable.h"

namespace tidewell {
namespace {

class GroupBalanceTest : public ConservedTable {
 protected:
  /// A process in a group, which has run on a pass, so that the group was read.
  std::int32_t startIn(std::int32_t group, const std::string& path) {
    const auto pid = kernel.spawn(1, path);
    kernel.processes.at(pid).group = group;
    pass();
    kernel.work(pid, 1);
    pass();
    return pid;
  }
  /// A child that lives between two passes only.
  void workUnseen(std::int32_t parent, std::uint64_t time) {
    kernel.work(parent, 1);
    const auto worker = kernel.spawn(parent, "/bin/worker");
    kernel.work(worker, time);
    kernel.endAndReap(worker);
  }
  /// A child of a child that has ended.
  void workAsOrphan(std::int32_t parent, std::uint64_t time) {
    kernel.work(parent, 1);
    const auto child = kernel.spawn(parent, "/bin/worker");
    const auto orphan = kernel.spawn(child, "/bin/worker");
    kernel.endAndReap(child);
    kernel.work(orphan, time);
    kernel.endAndReap(orphan);
  }
};

TEST_F(GroupBalanceTest, WhatNobodyWaitedForCountsForTheOldestOfTheGroup) {
  const auto parent = startIn(1, "/bin/parent");
  kernel.processes.at(parent).reapsNobody = true;
  workUnseen(parent, 5);
  pass();
  EXPECT_EQ(used("parent").time, 7U);
  EXPECT_EQ(total.time, kernel.charged);
  workUnseen(parent, 3);
  pass();
  EXPECT_EQ(used("parent").time, 11U);
  EXPECT_EQ(total.time, kernel.charged);
}

TEST_F(GroupBalanceTest, TheLastStretchOfAWorkerWasUsedAsWell) {
  const auto parent = startIn(1, "/bin/parent");
  kernel.processes.at(parent).reapsNobody = true;
  const auto worker = kernel.spawn(parent, "/bin/worker");
  kernel.work(worker, 3);
  pass();
  kernel.work(worker, 4);
  kernel.endAndReap(worker);
  groups.hadUnseen = false;
  pass();
  EXPECT_EQ(total.time, kernel.charged);
}

TEST_F(GroupBalanceTest, OrphansCountForTheirGroupAndNotForTheManagerThatReapsThem) {
  kernel.processes.at(1).group = 2;
  kernel.work(1, 1);
  const auto service = startIn(1, "/bin/service");
  workAsOrphan(service, 5);
  kernel.work(1, 1);
  pass();
  EXPECT_EQ(used("init").time, 2U);
  EXPECT_EQ(used("service").time, 7U);
  EXPECT_EQ(total.time, kernel.charged);
}

TEST_F(GroupBalanceTest, OrphansOfAGroupThatIsGoneStayWithTheirReaper) {
  kernel.processes.at(1).group = 2;
  kernel.work(1, 1);
  const auto service = startIn(1, "/bin/service");
  workAsOrphan(service, 5);
  kernel.endAndReap(service);
  groups.vanished = 1;
  pass();
  EXPECT_EQ(used("init").time, 6U);
  EXPECT_EQ(total.time, kernel.charged);
}

TEST_F(GroupBalanceTest, WhatIsReapedLateCountsOnce) {
  const auto parent = startIn(1, "/bin/parent");
  workUnseen(parent, 2);
  pass();
  const auto worker = kernel.spawn(parent, "");
  kernel.work(worker, 5);
  kernel.end(worker);
  pass();
  EXPECT_EQ(used("parent").time, 9U);
  kernel.reap(worker);
  kernel.work(parent, 1);
  pass();
  EXPECT_EQ(used("parent").time, 10U);
  EXPECT_EQ(total.time, kernel.charged);
}

TEST_F(GroupBalanceTest, AMovedProcessIsFoundInItsNewGroup) {
  const auto stays = startIn(1, "/bin/stays");
  const auto oldest = startIn(2, "/bin/oldest");
  const auto moved = startIn(1, "/bin/moved");
  kernel.processes.at(moved).group = 2;
  for (int tick = 0; tick < 5; ++tick) {
    kernel.work(stays, 1);
    kernel.work(oldest, 1);
    kernel.work(moved, 10);
    pass();
  }
  EXPECT_EQ(used("moved").time, 51U);
  EXPECT_EQ(used("stays").time, 6U);
  EXPECT_EQ(used("oldest").time, 6U);
}

TEST_F(GroupBalanceTest, OrphansOfAGroupThatSleptCountForItAndNotForTheManager) {
  kernel.processes.at(1).group = 2;
  kernel.work(1, 1);
  const auto service = startIn(1, "/bin/service");
  const auto orphan = kernel.spawn(1, "/bin/worker");
  kernel.processes.at(orphan).group = kernel.processes.at(service).group;
  kernel.work(orphan, 5);
  kernel.endAndReap(orphan);
  pass();
  EXPECT_EQ(used("init").time, 1U);
  EXPECT_EQ(used("service").time, 6U);
}

TEST_F(GroupBalanceTest, ABuildInAGroupThatCannotBeReadKeepsItsCharge) {
  const auto careless = startIn(1, "/bin/careless");
  kernel.processes.at(careless).reapsNobody = true;
  groups.vanished = 3;
  const auto build = startIn(3, "/bin/build");
  kernel.work(careless, 1);
  pass();
  workUnseen(careless, 5);
  workUnseen(build, 4);
  pass();
  EXPECT_EQ(used("careless").time, 8U);
  EXPECT_EQ(used("build").time, 6U);
}

TEST_F(GroupBalanceTest, AGroupThatAllHaveLeftIsNotRead) {
  const auto left = startIn(1, "/bin/left");
  const auto stays = startIn(2, "/bin/stays");
  kernel.endAndReap(left);
  pass();
  groups.timesAsked = 0;
  workAsOrphan(stays, 5);
  pass();
  EXPECT_EQ(groups.timesAsked, 1);
}

TEST_F(GroupBalanceTest, NothingIsFoundInAGroupWithAProcessThatMayNotBeRead) {
  const auto parent = startIn(1, "/bin/parent");
  const auto other = kernel.spawn(parent, "/bin/other");
  kernel.processes.at(other).hidden = true;
  kernel.work(parent, 1);
  pass();
  kernel.work(other, 9);
  kernel.work(parent, 1);
  pass();
  EXPECT_EQ(used("parent").time, 3U);
}

TEST_F(GroupBalanceTest, TheFirstReadingOfAGroupIsNoWork) {
  kernel.groupTimes[1] = 1000;
  startIn(1, "/bin/parent");
  EXPECT_EQ(used("parent").time, 1U);
}

TEST_F(GroupBalanceTest, WithoutAnythingUnseenNoGroupIsRead) {
  const auto parent = startIn(1, "/bin/parent");
  groups.hadUnseen = false;
  groups.timesAsked = 0;
  kernel.work(parent, 5);
  pass();
  EXPECT_EQ(groups.timesAsked, 0);
  groups.hadUnseen = true;
  pass();
  EXPECT_EQ(groups.timesAsked, 1);
  EXPECT_EQ(used("parent").time, 6U);
}

TEST_F(GroupBalanceTest, AGroupInWhichNothingRanIsNotRead) {
  startIn(1, "/bin/parent");
  groups.timesAsked = 0;
  pass();
  EXPECT_EQ(groups.timesAsked, 0);
}

TEST_F(GroupBalanceTest, TheFirstCreditAfterAHiddenProcessIsDropped) {
  const auto parent = startIn(1, "/bin/parent");
  kernel.processes.at(parent).reapsNobody = true;
  const auto other = kernel.spawn(parent, "/bin/other");
  kernel.processes.at(other).hidden = true;
  kernel.work(other, 9);
  kernel.work(parent, 1);
  pass();
  kernel.work(other, 9);
  kernel.work(parent, 1);
  kernel.endAndReap(other);
  pass();
  EXPECT_EQ(used("parent").time, 3U);
  workUnseen(parent, 5);
  pass();
  EXPECT_EQ(used("parent").time, 9U);
}

TEST_F(GroupBalanceTest, AGroupThatTheLastMemberLeftByAMoveIsNotRead) {
  kernel.processes.at(1).group = 3;
  const auto moved = startIn(1, "/bin/moved");
  kernel.processes.at(moved).group = 2;
  for (int tick = 0; tick < 3; ++tick) {
    kernel.work(1, 1);
    kernel.work(moved, 1);
    pass();
  }
  groups.timesAsked = 0;
  const auto orphan = kernel.spawn(1, "/bin/worker");
  kernel.processes.at(orphan).group = 2;
  kernel.work(orphan, 5);
  kernel.endAndReap(orphan);
  pass();
  EXPECT_EQ(groups.timesAsked, 2) << "that of the first process, and the new one";
}

/// Four processors can give ten seconds between two passes.
class GroupWithAHiddenProcessTest : public ConservedTable {
 protected:
  GroupWithAHiddenProcessTest() : ConservedTable(4) {
    kernel.processes.at(1).group = 2;
    quiet = kernel.spawn(1, "/bin/quiet");
    kernel.processes.at(quiet).group = 1;
    for (int tick = 0; tick < 2; ++tick) {
      kernel.work(1, 1);
      kernel.work(quiet, 1);
      pass();
    }
    hidden = kernel.spawn(quiet, "/bin/hidden");
    kernel.processes.at(hidden).hidden = true;
  }
  void workHidden() {
    for (int tick = 0; tick < 20; ++tick) {
      kernel.work(hidden, 8);
      pass();
    }
  }

  std::int32_t quiet = 0;
  std::int32_t hidden = 0;
};

TEST_F(GroupWithAHiddenProcessTest, ItsParentThatSleptGetsItsChargeOnly) {
  workHidden();
  kernel.endAndReap(hidden);
  kernel.work(quiet, 1);
  pass();
  EXPECT_EQ(used("quiet").time, 2U + 1U + 10U);
}

TEST_F(GroupWithAHiddenProcessTest, AQuietProgramGetsNothingOfWhatTheFirstProcessReaps) {
  kernel.processes.at(hidden).parent = 1;
  workHidden();
  kernel.endAndReap(hidden);
  pass();
  EXPECT_EQ(used("quiet").time, 2U);
  EXPECT_EQ(used("init").time, 2U + 10U);
}

TEST_F(GroupWithAHiddenProcessTest, AQuietProgramThatRanGetsNothingEither) {
  kernel.processes.at(hidden).parent = 1;
  for (int tick = 0; tick < 20; ++tick) {
    kernel.work(hidden, 8);
    kernel.work(quiet, 1);
    pass();
  }
  kernel.work(hidden, 8);
  kernel.work(quiet, 1);
  kernel.endAndReap(hidden);
  pass();
  EXPECT_EQ(used("quiet").time, 23U);
  EXPECT_EQ(used("init").time, 2U + 10U);
}

TEST_F(GroupWithAHiddenProcessTest, ChargeAndCreditAreNotMoreThanTheProcessorsGave) {
  kernel.endAndReap(hidden);
  const auto child = kernel.spawn(quiet, "/bin/child");
  kernel.work(child, 7);
  kernel.endAndReap(child);
  const auto orphan = kernel.spawn(1, "/bin/orphan");
  kernel.processes.at(orphan).group = 1;
  kernel.work(orphan, 6);
  kernel.endAndReap(orphan);
  pass();
  EXPECT_EQ(used("quiet").time, 2U + 10U);
}

class OwnGroupTest : public ConservedTable {
 protected:
  OwnGroupTest() : ConservedTable(ProcessItself{2}) {}
};

TEST_F(OwnGroupTest, TheToolsOfTheProgramAreNotFoundInItsGroup) {
  const auto program = kernel.spawn(1, "/bin/program");
  kernel.processes.at(program).group = 1;
  kernel.work(program, 1);
  pass();
  kernel.work(program, 1);
  pass();
  const auto tool = kernel.spawn(program, "/bin/tool");
  kernel.work(tool, 9);
  kernel.work(program, 1);
  kernel.endAndReap(tool);
  pass();
  EXPECT_EQ(used("program").time, 3U);
}

}  // namespace
}  // namespace tidewell
