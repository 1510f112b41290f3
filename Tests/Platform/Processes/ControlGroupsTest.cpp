#include "Platform/Linux/Processes/ControlGroups.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Platform/Linux/Processes/ProcessTracker.h"
#include "Platform/Linux/Text/IcuText.h"
#include "Tests/Platform/Processes/NoApplications.h"
#include "Tests/Platform/Processes/ProcTree.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

class ControlGroupsTest : public ::testing::Test {
 protected:
  void setTime(const std::string& group, const std::string& content) {
    std::filesystem::create_directories(folder.path() / group);
    std::ofstream(folder.path() / group / "cpu.stat") << content;
  }

  void setMembers(const std::string& group, const std::string& content) {
    std::filesystem::create_directories(folder.path() / group);
    std::ofstream(folder.path() / group / "cgroup.procs") << content;
  }

  testing::TemporaryFolder folder;
  ControlGroups groups{folder.path().string()};
};

TEST_F(ControlGroupsTest, TheMountPointIsThatOfTheUnifiedHierarchy) {
  EXPECT_EQ(ControlGroups::mountPoint("proc /proc proc rw 0 0\n"
                                      "cgroup /sys/fs/cgroup/cpu cgroup rw,cpu 0 0\n"
                                      "cgroup2 /sys/fs/cgroup/unified cgroup2 rw 0 0\n"),
            "/sys/fs/cgroup/unified");
  EXPECT_EQ(ControlGroups::mountPoint("proc /proc proc rw 0 0\nshort\n\n"), "");
}

TEST_F(ControlGroupsTest, AGroupKeepsItsNumber) {
  const auto number = groups.number("4:memory:/other\n0::/a.slice\n");
  EXPECT_GT(number, 0);
  EXPECT_EQ(groups.number("0::/a.slice\n"), number);
  EXPECT_NE(groups.number("0::/b.slice\n"), number);
}

TEST_F(ControlGroupsTest, TheRootAndNoneHaveNoNumber) {
  EXPECT_EQ(groups.number("0::/\n"), 0);
  EXPECT_EQ(groups.number("4:memory:/other\n"), 0);
  EXPECT_EQ(groups.number(""), 0);
  EXPECT_EQ(groups.number("0::/../../other.slice\n"), 0);
  EXPECT_EQ(ControlGroups("").number("0::/a.slice\n"), 0);
}

TEST_F(ControlGroupsTest, ReadsWhatAGroupHasUsed) {
  setTime("a.slice", "usage_usec 4711\nuser_usec 4000\nsystem_usec 711\n");
  const auto number = groups.number("0::/a.slice\n");
  EXPECT_EQ(groups.microseconds(number), 4711U);
  setTime("a.slice", "usage_usec 4712\n");
  EXPECT_EQ(groups.microseconds(number), 4712U);
}

TEST_F(ControlGroupsTest, WhatCannotBeReadIsAbsent) {
  EXPECT_FALSE(groups.microseconds(groups.number("0::/gone\n")));
  for (const char* content : {"", "usage_usec \n", "nr_periods 5\n"}) {
    setTime("damaged", content);
    EXPECT_FALSE(groups.microseconds(groups.number("0::/damaged\n"))) << content;
  }
  EXPECT_FALSE(groups.microseconds(99));
}

TEST_F(ControlGroupsTest, ListsTheMembersOfAGroupWithNoneBelow) {
  setMembers("a", "12\n0\n14\n");
  const auto number = groups.number("0::/a\n");
  EXPECT_EQ(groups.members(number), (std::vector<std::int32_t>{12, 0, 14}));
  setMembers("a/below", "15\n");
  if (std::filesystem::hard_link_count(folder.path() / "a") <= 2) {
    GTEST_SKIP() << "this file system does not count the folders in a folder";
  }
  EXPECT_FALSE(groups.members(number));
}

TEST_F(ControlGroupsTest, MembersThatCannotBeListedAreAbsent) {
  setTime("a", "usage_usec 1\n");
  EXPECT_FALSE(groups.members(groups.number("0::/a\n")));
  setMembers("a", "");
  EXPECT_FALSE(groups.members(groups.number("0::/a\n")));
  EXPECT_FALSE(groups.members(99));
  setMembers("a", "12\n?\n14\n");
  EXPECT_FALSE(groups.members(groups.number("0::/a\n"))) << "nobody knows who follows";
}

TEST_F(ControlGroupsTest, AGroupThatIsNotUsedIsForgotten) {
  setTime("a", "usage_usec 1\n");
  setTime("b", "usage_usec 2\n");
  const auto kept = groups.number("0::/a\n");
  const auto dropped = groups.number("0::/b\n");
  groups.keepOnly([kept](std::int32_t number) { return number == kept; });
  EXPECT_EQ(groups.microseconds(kept), 1U);
  EXPECT_FALSE(groups.microseconds(dropped));
  EXPECT_NE(groups.number("0::/b\n"), dropped);
}

class TrackedGroupsTest : public ControlGroupsTest {
 protected:
  TrackedGroupsTest() {
    setTime("one", "usage_usec 5\n");
    tree.put({.pid = 10, .exe = "/bin/program", .cgroup = "0::/one\n"});
    tree.put({.pid = 11, .exe = "/bin/program", .cgroup = "0::/two\n"});
    tree.put({.pid = 12, .exe = "", .comm = "vhost-10", .cgroup = "0::/one\n", .parent = 2});
    tree.setNewestPid(12);
    tracker.refresh();
  }
  /// Whether all members of the first group are known if it has these.
  bool areKnown(const std::string& members) {
    setMembers("one", members);
    return tracker.hasOnlyKnownMembers(tracker.find(10)->group);
  }

  ProcTree tree;
  ProcFileSystem proc{tree.root()};
  NoApplications applications;
  IcuText text;
  ProcessTracker tracker{{.proc = proc,
                          .clock = tree,
                          .applications = applications,
                          .text = text,
                          .controlGroups = folder.path().string()}};
};

TEST_F(TrackedGroupsTest, TheTrackerKnowsTheGroupsOfItsProcesses) {
  const auto group = tracker.find(10)->group;
  EXPECT_GT(group, 0);
  EXPECT_NE(tracker.find(11)->group, group);
  EXPECT_EQ(tracker.groupTime(group), 5'000U);
  EXPECT_FALSE(tracker.groupTime(tracker.find(11)->group));
  tree.setFile(11, "cgroup", "0::/one\n");
  EXPECT_EQ(tracker.readGroup(11), group);
}

TEST_F(TrackedGroupsTest, ReadableMembersAndThoseBornSinceAreKnown) {
  EXPECT_TRUE(areKnown("10\n"));
  EXPECT_TRUE(areKnown("10\n13\n")) << "it has ended since";
  tree.put({.pid = 13, .exe = "/bin/program", .cgroup = "0::/one\n"});
  EXPECT_TRUE(areKnown("10\n13\n"));
  tree.put({.pid = 9, .exe = "/bin/program", .cgroup = "0::/one\n"});
  EXPECT_TRUE(areKnown("10\n9\n")) << "it was being born when the newest number was read";
}

TEST_F(TrackedGroupsTest, OthersThatUseTheTimeOfAGroupAreNotKnown) {
  tree.put({.pid = 9, .exe = "/bin/program", .cgroup = "0::/one\n"});
  std::filesystem::remove_all(std::filesystem::path(tree.root()) / "9");
  EXPECT_FALSE(areKnown("10\n9\n")) << "it is hidden from us";
  EXPECT_FALSE(areKnown("10\n0\n")) << "it is in another process namespace";
  EXPECT_FALSE(areKnown("10\n12\n")) << "it is a thread of the kernel";
  tree.put({.pid = 13, .exe = "", .comm = "vhost-10", .cgroup = "0::/one\n", .parent = 2});
  EXPECT_FALSE(areKnown("10\n13\n")) << "it is a thread of the kernel, made since";
}

TEST_F(TrackedGroupsTest, AMovedProcessIsKnownTheNextTime) {
  tree.setFile(11, "cgroup", "0::/one\n");
  EXPECT_FALSE(areKnown("10\n11\n"));
  EXPECT_TRUE(areKnown("10\n11\n"));
}

}  // namespace
}  // namespace platform
