// How the process table reads the kernel's answers, the odd ones included.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Platform/MacOS/Processes/LibprocProcessTable.h"
#include "Platform/MacOS/Processes/StaylitProcess.h"
#include "Tests/Platform/MacOS/Stubs/Kernel.h"
#include "Tests/Platform/MacOS/Stubs/Workspace.h"

namespace platform {
namespace {

using Pids = std::vector<std::int32_t>;

class LibprocRecordsTest : public ::testing::Test {
 protected:
  LibprocRecordsTest() { kernel.processes.emplace(); }

  void start(stub::Process process) {
    process.user = geteuid();
    kernel.processes->push_back(std::move(process));
  }

  Pids pids() {
    const tidewell::ProcessSnapshot snapshot = table.snapshot();
    return {snapshot.processes.begin(), snapshot.processes.end()};
  }

  stub::Kernel& kernel = stub::Kernel::shared();
  LibprocProcessTable table{[] { return KernelSnapshot::Applications(); }};
};

TEST_F(LibprocRecordsTest, AreListedInTheKernelsOrder) {
  for (const std::int32_t pid : {501, 7, 88})
    start({.pid = pid});
  EXPECT_EQ(pids(), (Pids{501, 7, 88}));
}

TEST_F(LibprocRecordsTest, MayBecomeFewerOrMoreWhileTheyAreListed) {
  for (std::int32_t pid = 1; pid <= 5; ++pid)
    start({.pid = pid});
  kernel.afterOfferingRoom = [this] { kernel.processes->resize(2); };
  EXPECT_EQ(pids(), (Pids{1, 2}));
  kernel.afterOfferingRoom = [this] {
    for (std::int32_t pid = 3; pid <= 100; ++pid)
      start({.pid = pid});
  };
  EXPECT_EQ(pids().size(), 22U) << "as many as there was room for";
  EXPECT_EQ(pids().size(), 100U);
}

TEST_F(LibprocRecordsTest, AreNoneWhereTheKernelListsNone) {
  start({.pid = 7});
  kernel.listsNothing = true;
  EXPECT_EQ(pids(), Pids{});
  kernel.offersNoRoom = true;
  EXPECT_EQ(pids(), Pids{});
}

TEST_F(LibprocRecordsTest, AreReadFieldByField) {
  start({.pid = 7,
         .userTime = 1,
         .systemTime = 20,
         .childUserTime = 300,
         .childSystemTime = 4'000,
         .diskBytesRead = 50'000,
         .diskBytesWritten = 600'000,
         .startTime = 7'000'000});
  tidewell::ResourceUsage usage;
  ASSERT_TRUE(table.resourceUsage(7, usage));
  EXPECT_EQ(usage.userTime, 1U);
  EXPECT_EQ(usage.systemTime, 20U);
  EXPECT_EQ(usage.reapedTime, 4'300U);
  EXPECT_EQ(usage.diskBytesRead, 50'000U);
  EXPECT_EQ(usage.diskBytesWritten, 600'000U);
  EXPECT_EQ(usage.startTime, 7'000'000U);
}

TEST_F(LibprocRecordsTest, LeaveNothingOfAnEarlierOneWhereThereIsNone) {
  start({.pid = 7, .userTime = 1, .startTime = 2});
  tidewell::ResourceUsage usage;
  EXPECT_TRUE(table.resourceUsage(7, usage));
  EXPECT_FALSE(table.resourceUsage(8, usage));
  EXPECT_EQ(usage.userTime, 0U);
  EXPECT_EQ(usage.startTime, 0U);
}

TEST_F(LibprocRecordsTest, HaveTimesInTheKernelsUnits) {
  const tidewell::Timebase timebase = table.timebase();
  EXPECT_EQ(timebase.numer, 125U);
  EXPECT_EQ(timebase.denom, 3U);
}

TEST_F(LibprocRecordsTest, HavePathsThatAreSafeToShow) {
  start({.pid = 7, .path = "/Applications/A\nB.app/\xFF"});
  EXPECT_EQ(table.path(7), "/Applications/A\uFFFDB.app/\uFFFD");
}

TEST_F(LibprocRecordsTest, HavePathsOfAnyLengthThatTheSystemKnows) {
  const std::string longest = "/" + std::string(4094, 'x');
  start({.pid = 7, .path = longest});
  start({.pid = 8, .path = longest + "y"});
  EXPECT_EQ(table.path(7), longest);
  EXPECT_EQ(table.path(8), "");
}

TEST_F(LibprocRecordsTest, KeepLongPathsShortWhenTheyAreMended) {
  start({.pid = 7, .path = "/" + std::string(4094, '\xFF')});
  const std::string path(table.path(7));
  EXPECT_LE(path.size(), 4095U);
  EXPECT_EQ(path.substr(0, 7), "/\uFFFD\uFFFD");
  EXPECT_EQ(path.substr(path.size() - 3), "\uFFFD") << "a whole character at the end";
}

TEST_F(LibprocRecordsTest, TellTheParentOfEveryUsersProcess) {
  start({.pid = 7, .parent = 3});
  kernel.processes->push_back({.pid = 8, .parent = 4, .user = geteuid() + 1});
  EXPECT_EQ(table.parent(7), 3);
  EXPECT_EQ(table.parent(8), 4);
  EXPECT_EQ(table.parent(9), 0);
}

TEST_F(LibprocRecordsTest, TellWhoIgnoresTheEndOfItsChildren) {
  start({.pid = 7});
  start({.pid = 8, .ignoresEndOfChildren = true});
  EXPECT_FALSE(table.isChargedTwice(7));
  EXPECT_TRUE(table.isChargedTwice(8));
  EXPECT_FALSE(table.isChargedTwice(9));
}

TEST_F(LibprocRecordsTest, OfAnEndedProcessHaveAllButItsPath) {
  start({.pid = 7, .parent = 3, .waitsToBeReaped = true, .path = "/bin/cc", .userTime = 5});
  tidewell::ResourceUsage usage;
  EXPECT_EQ(pids(), Pids{7});
  EXPECT_TRUE(table.resourceUsage(7, usage));
  EXPECT_EQ(usage.userTime, 5U);
  EXPECT_EQ(table.parent(7), 3);
  EXPECT_EQ(table.path(7), "");
}

class StaylitRecordsTest : public LibprocRecordsTest {
 protected:
  StaylitRecordsTest() {
    // Asked once in the life of the program.
    kernel.reset();
    EXPECT_TRUE(isAStaylit(getpid()));
    kernel.processes.emplace();
  }
};

TEST_F(StaylitRecordsTest, AreKnownByTheNameOfTheProgram) {
  start({.pid = 7, .path = "/Users/b/Staylit.app/Contents/MacOS/Staylit"});
  start({.pid = 8, .path = "/Applications/Staylitter"});
  start({.pid = 9, .path = "/Applications/Staylit/other"});
  EXPECT_TRUE(isAStaylit(7));
  EXPECT_FALSE(isAStaylit(8));
  EXPECT_FALSE(isAStaylit(9));
  EXPECT_FALSE(isAStaylit(10));
}

TEST_F(StaylitRecordsTest, AreKnownByTheIdentifierOfTheApplication) {
  start({.pid = 7, .path = "/Applications/Renamed"});
  stub::Workspace::shared().applications = {{7, "com.staylit.app"}, {8, "com.staylit.apple"}};
  EXPECT_TRUE(isAStaylit(7));
  EXPECT_FALSE(isAStaylit(8));
}

}  // namespace
}  // namespace platform
