#include "Platform/Linux/Processes/ProcessTracker.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Platform/Linux/Text/IcuText.h"
#include "Tests/Platform/Processes/ProcTree.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using Access = TrackedProcess::Access;

/// Every process whose control group names a unit "app-NAME" belongs to the application NAME.
class UnitsByName : public ApplicationResolver {
 public:
  std::shared_ptr<const ApplicationIdentity> applicationOf(const ProcessFacts& facts) override {
    last = facts;
    const auto found = facts.cgroup.find("app-");
    if (found == std::string_view::npos) return nullptr;
    auto name = facts.cgroup.substr(found + 4);
    while (name.ends_with('\n'))
      name.remove_suffix(1);
    return std::make_shared<ApplicationIdentity>(
        ApplicationIdentity{std::string(name), std::nullopt});
  }
  void refresh() override { ++refreshes; }

  int refreshes = 0;
  ProcessFacts last{};
};

class ProcessTrackerTest : public ::testing::Test {
 protected:
  ProcessTracker& tracker() {
    if (!proc_) {
      proc_.emplace(tree.root());
      tracker_.emplace(ProcessTracker::Sources{*proc_, tree, units, text, [this] { return now; },
                                               [this] { return uptimeTicks; }});
    }
    return *tracker_;
  }

  std::vector<std::int32_t> pids() {
    std::vector<std::int32_t> all;
    for (const auto& process : tracker().processes())
      all.push_back(process.pid);
    return all;
  }

  const TrackedProcess& process(std::int32_t pid) {
    const TrackedProcess* found = tracker().find(pid);
    if (!found) throw std::runtime_error("no such process");
    return *found;
  }

  ProcTree tree;
  std::uint64_t uptimeTicks = 1000;  ///< The moment at which the processes of the tree start.
  UnitsByName units;
  IcuText text;
  tidewell::Moment now{};

 private:
  std::optional<ProcFileSystem> proc_;
  std::optional<ProcessTracker> tracker_;
};

TEST_F(ProcessTrackerTest, FindsEveryProcessInTheFirstPass) {
  tree.put(
      {.pid = 30, .exe = "/usr/bin/b", .cpuNanoseconds = 5, .readBytes = 1, .writtenBytes = 2});
  tree.put({.pid = 4, .exe = "/usr/bin/a"});
  tree.setNewestPid(30);
  tracker().refresh();
  EXPECT_EQ(pids(), (std::vector{4, 30}));
  EXPECT_EQ(process(30).path, "/usr/bin/b");
  EXPECT_EQ(process(30).cpuTime, 5u);
  EXPECT_EQ(process(30).io.readBytes, 1u);
  EXPECT_EQ(process(30).io.writeBytes, 2u);
}

TEST_F(ProcessTrackerTest, FindsANewProcessByTheNewestIdentifierWithoutListingTheFolder) {
  tree.put({.pid = 4, .exe = "/usr/bin/a"});
  tree.setNewestPid(4);
  tracker().refresh();
  tree.put({.pid = 9, .exe = "/usr/bin/b"});
  // According to `loadavg` the kernel has not given out this pid, so only a listing can find it.
  tree.put({.pid = 50, .exe = "/usr/bin/c"});
  tree.setNewestPid(10);
  tracker().refresh();
  EXPECT_EQ(pids(), (std::vector{4, 9}));
}

TEST_F(ProcessTrackerTest, ListsTheFolderAfterHalfAMinute) {
  tree.put({.pid = 4, .exe = "/usr/bin/a"});
  tree.setNewestPid(4);
  tracker().refresh();
  tree.put({.pid = 50, .exe = "/usr/bin/c"});
  now += 29s;
  tracker().refresh();
  EXPECT_EQ(pids(), (std::vector{4}));
  now += 1s;
  tracker().refresh();
  EXPECT_EQ(pids(), (std::vector{4, 50}));
  EXPECT_EQ(units.refreshes, 2);
}

TEST_F(ProcessTrackerTest, ListsTheFolderWhenTheIdentifiersBeganAgain) {
  tree.put({.pid = 4000, .exe = "/usr/bin/a"});
  tree.setNewestPid(4000);
  tracker().refresh();
  tree.put({.pid = 7, .exe = "/usr/bin/b"});
  tree.setNewestPid(7);
  tracker().refresh();
  EXPECT_EQ(pids(), (std::vector{7, 4000}));
}

TEST_F(ProcessTrackerTest, DropsAProcessWhoseClockIsGone) {
  tree.put({.pid = 4, .exe = "/usr/bin/a"});
  tree.put({.pid = 5, .exe = "/usr/bin/b"});
  tree.setNewestPid(5);
  tracker().refresh();
  tree.end(4);
  tracker().refresh();
  EXPECT_EQ(pids(), (std::vector{5}));
  EXPECT_EQ(tracker().find(4), nullptr);
}

TEST_F(ProcessTrackerTest, DoesNotReadTheFilesOfAProcessThatDidNotRun) {
  tree.put({.pid = 4, .exe = "/usr/bin/a", .cpuNanoseconds = 10, .readBytes = 100});
  tree.setNewestPid(4);
  tracker().refresh();
  tracker().refresh();
  // From here on every pass would notice a changed file.
  tree.setFile(4, "io", "x\nread_bytes: 999\nwrite_bytes: 0\n");
  tracker().refresh();
  EXPECT_EQ(process(4).io.readBytes, 100u);
  tree.setClock(4, 11);
  tracker().refresh();
  EXPECT_EQ(process(4).io.readBytes, 999u);
  EXPECT_EQ(process(4).cpuTime, 11u);
}

TEST_F(ProcessTrackerTest, ReadsTheClockOfAQuietProcessOnce) {
  for (int pid = 10; pid < 20; ++pid)
    tree.put({.pid = pid, .exe = "/usr/bin/a"});
  tree.setNewestPid(20);
  tracker().refresh();
  tracker().refresh();
  const int before = tree.clockReadings();
  tracker().refresh();
  EXPECT_EQ(tree.clockReadings() - before, 10);
}

TEST_F(ProcessTrackerTest, ReadsTheNameAgainWhenTheCommChanged) {
  tree.put({.pid = 4, .exe = "/usr/bin/sh", .comm = "sh", .cpuNanoseconds = 1});
  tree.setNewestPid(4);
  tracker().refresh();
  tracker().refresh();
  tree.put({.pid = 4, .exe = "/usr/bin/ffmpeg", .comm = "ffmpeg", .cpuNanoseconds = 2});
  tracker().refresh();
  EXPECT_EQ(process(4).path, "/usr/bin/ffmpeg");
}

TEST_F(ProcessTrackerTest, SoonNoticesAProgramThatWasReplacedUnderTheSameComm) {
  tree.put({.pid = 4, .exe = "/opt/old/tool", .comm = "tool", .cpuNanoseconds = 1});
  tree.setNewestPid(4);
  tracker().refresh();
  tracker().refresh();
  for (std::uint64_t cpu = 2; cpu < 12; ++cpu) {
    tree.put({.pid = 4, .exe = "/opt/new/tool", .comm = "tool", .cpuNanoseconds = cpu});
    tracker().refresh();
  }
  EXPECT_EQ(process(4).path, "/opt/new/tool");
}

TEST_F(ProcessTrackerTest, LooksAtTheUnitOfANewProcessOnASecondPass) {
  tree.put({.pid = 4, .exe = "/usr/bin/a", .cgroup = "0::/session.scope\n"});
  tree.setNewestPid(4);
  tracker().refresh();
  EXPECT_EQ(process(4).application, nullptr);
  tree.setFile(4, "cgroup", "0::/app-player\n");
  tracker().refresh();
  ASSERT_NE(process(4).application, nullptr);
  EXPECT_EQ(process(4).application->bundleIdentifier(), "player");
}

TEST_F(ProcessTrackerTest, LooksOnlyOnceAtAnOldProcess) {
  uptimeTicks = 1000 + static_cast<std::uint64_t>(10 * sysconf(_SC_CLK_TCK));
  tree.put({.pid = 4, .exe = "/usr/bin/a", .start = 999});
  tree.put({.pid = 5, .exe = "/usr/bin/b", .start = 1000});
  tree.setNewestPid(5);
  tracker().refresh();
  const std::uint32_t first = process(4).programVersion;
  const std::uint32_t second = process(5).programVersion;
  tracker().refresh();
  EXPECT_EQ(process(4).programVersion, first);
  EXPECT_EQ(process(5).programVersion, second + 1) << "ten seconds old";
}

TEST_F(ProcessTrackerTest, GivesTheResolverTheFactsOfAProcess) {
  tree.put({.pid = 4,
            .exe = "/usr/bin/python3.11",
            .start = 77,
            .cgroup = "0::/x\n",
            .session = 31,
            .terminal = 34816});
  tree.setNewestPid(4);
  tracker().refresh();
  EXPECT_EQ(units.last.pid, 4);
  EXPECT_EQ(units.last.startTicks, 77u);
  EXPECT_EQ(units.last.session, 31);
  EXPECT_TRUE(units.last.hasTerminal);
}

TEST_F(ProcessTrackerTest, TreatsAClockThatRunsBackwardsAsAnotherProcess) {
  tree.put({.pid = 4, .exe = "/usr/bin/a", .comm = "same", .cpuNanoseconds = 100, .readBytes = 50});
  tree.setNewestPid(4);
  tracker().refresh();
  tracker().refresh();
  tree.put({.pid = 4, .exe = "/usr/bin/b", .comm = "same", .cpuNanoseconds = 3, .start = 2000});
  tracker().refresh();
  EXPECT_EQ(process(4).path, "/usr/bin/b");
  EXPECT_EQ(process(4).startTicks, 2000u);
  EXPECT_EQ(process(4).cpuTime, 3u);
  EXPECT_EQ(process(4).io.readBytes, 0u);
}

TEST_F(ProcessTrackerTest, ReadsAProcessAfreshWhenItsIdentifierWasGivenOutAgain) {
  tree.put({.pid = 400, .exe = "/usr/bin/a", .comm = "same", .cpuNanoseconds = 100});
  tree.put({.pid = 900, .exe = "/usr/bin/z"});
  tree.setNewestPid(900);
  tracker().refresh();
  tracker().refresh();
  // The pids began again and passed 400. The new process has used more time than the former one.
  tree.put({.pid = 400, .exe = "/usr/bin/b", .comm = "same", .cpuNanoseconds = 500, .start = 2000});
  tree.setNewestPid(401);
  tracker().refresh();
  EXPECT_EQ(process(400).path, "/usr/bin/b");
  EXPECT_EQ(process(400).cpuTime, 500u);
}

TEST_F(ProcessTrackerTest, ListsAKernelThreadButKnowsNothingOfIt) {
  tree.put({.pid = 2, .exe = "", .comm = "kthreadd"});
  tree.setNewestPid(2);
  tracker().refresh();
  EXPECT_EQ(process(2).access, Access::withoutProgram);
  EXPECT_TRUE(process(2).path.empty());
}

TEST_F(ProcessTrackerTest, KeepsTheFactsOfAnEndedProcessUntilItIsReaped) {
  tree.put({.pid = 4, .exe = "/usr/bin/a", .cpuNanoseconds = 10, .readBytes = 5});
  tree.setNewestPid(4);
  tracker().refresh();
  tree.put({.pid = 4, .exe = "", .cpuNanoseconds = 12, .readBytes = 5, .state = "Z"});
  tracker().refresh();
  EXPECT_EQ(process(4).access, Access::readable);
  EXPECT_EQ(process(4).path, "/usr/bin/a");
  EXPECT_EQ(process(4).cpuTime, 12u);
}

TEST_F(ProcessTrackerTest, SkipsAProcessThatVanishesWhileItIsRead) {
  tree.put({.pid = 4, .exe = "/usr/bin/a"});
  tree.put({.pid = 5, .exe = "/usr/bin/b"});
  tree.setFile(5, "stat", std::nullopt);
  tree.setNewestPid(5);
  tracker().refresh();
  EXPECT_EQ(pids(), (std::vector{4}));
}

TEST_F(ProcessTrackerTest, CountsNoTrafficWhenTheKernelKeepsNoCounters) {
  tree.put({.pid = 4, .exe = "/usr/bin/a"});
  tree.setFile(4, "io", "");
  tree.setNewestPid(4);
  tracker().refresh();
  EXPECT_EQ(process(4).access, Access::readable);
  EXPECT_EQ(process(4).io.readBytes, 0u);
}

TEST_F(ProcessTrackerTest, ReadsTheStatFilesWhenClocksAreRefused) {
  tree.setClocksWork(false);
  tree.put({.pid = 4, .exe = "/usr/bin/a", .cpuTicks = 7});
  tree.setNewestPid(4);
  tracker().refresh();
  EXPECT_EQ(process(4).cpuTime, 7u);
  EXPECT_EQ(tree.clockReadings(), 0);
  tree.put({.pid = 4, .exe = "/usr/bin/a", .cpuTicks = 9, .readBytes = 3});
  tree.put({.pid = 2, .exe = "/usr/bin/b"});
  tracker().refresh();
  EXPECT_EQ(process(4).cpuTime, 9u);
  EXPECT_EQ(process(4).io.readBytes, 3u);
  EXPECT_EQ(pids(), (std::vector{2, 4}));
  EXPECT_EQ(tracker().timebase().numer, 1'000'000'000u);
  EXPECT_EQ(tracker().timebase().denom, 100u);
}

TEST_F(ProcessTrackerTest, SurvivesAnEmptyFolder) {
  tree.setFile(0, "../loadavg", std::nullopt);
  tracker().refresh();
  tracker().refresh();
  EXPECT_TRUE(pids().empty());
}

TEST_F(ProcessTrackerTest, MakesOnePassForASnapshotOfTheTable) {
  LinuxProcessTable table(tracker());
  const auto listed = [&table] {
    const auto all = table.snapshot().processes;
    return std::vector(all.begin(), all.end());
  };
  tree.put({.pid = 4, .exe = "/usr/bin/a"});
  tree.setNewestPid(4);
  EXPECT_EQ(listed(), (std::vector{4}));
  tree.put({.pid = 5, .exe = "/usr/bin/a"});
  tree.setNewestPid(5);
  EXPECT_EQ(table.path(4), "/usr/bin/a");
  EXPECT_EQ(table.path(5), "") << "until the next snapshot";
  EXPECT_EQ(listed(), (std::vector{4, 5}));
}

TEST_F(ProcessTrackerTest, AsksAParentForWhatItsChildrenUsed) {
  tree.put({.pid = 4, .exe = "/usr/bin/make"});
  tree.put({.pid = 9, .exe = "/usr/bin/cc", .parent = 4});
  tree.setNewestPid(9);
  tracker().refresh();
  tracker().refresh();
  tree.end(9);
  tree.put({.pid = 4, .exe = "/usr/bin/make", .cpuNanoseconds = 1, .reapedTicks = 70});
  tracker().refresh();
  EXPECT_EQ(process(4).reapedTicks, 70u);
  tree.update({.pid = 4, .exe = "/usr/bin/make", .cpuNanoseconds = 2, .reapedTicks = 90});
  tracker().refresh();
  EXPECT_EQ(process(4).reapedTicks, 90u) << "also once its file is kept open";
}

TEST_F(ProcessTrackerTest, FindsTheReapedTimeOfUnseenChildren) {
  tree.put({.pid = 4, .exe = "/usr/bin/sh"});
  tree.setNewestPid(4);
  tracker().refresh();
  tracker().refresh();
  tree.put({.pid = 4, .exe = "/usr/bin/sh", .cpuNanoseconds = 1, .reapedTicks = 30});
  tree.setNewestPid(12);
  tracker().refresh();
  EXPECT_EQ(process(4).reapedTicks, 30u);
}

TEST_F(ProcessTrackerTest, AsksNoProcessForChildrenWhileNoneCanHaveBeenBorn) {
  tree.put({.pid = 4, .exe = "/usr/bin/sh"});
  tree.setNewestPid(4);
  tracker().refresh();
  tracker().refresh();
  tree.setClock(4, 1);
  tree.setFile(4, "stat", std::nullopt);
  tracker().refresh();
  EXPECT_EQ(process(4).cpuTime, 1u);
  EXPECT_EQ(process(4).looks, 2) << "the file that is gone was not missed";
}

TEST_F(ProcessTrackerTest, SweepsManyProcessesInTurn) {
  constexpr std::int32_t kProcesses = 150;
  const auto putAll = [&](std::uint64_t cpu, std::uint64_t reaped) {
    for (std::int32_t pid = 1; pid <= kProcesses; ++pid)
      tree.put({.pid = pid,
                .exe = "/usr/bin/sh",
                .cpuNanoseconds = cpu,
                .parent = 0,
                .reapedTicks = reaped});
  };
  const auto asked = [&] {
    return std::ranges::count_if(tracker().processes(), &TrackedProcess::reaps);
  };
  putAll(0, 0);
  tree.setNewestPid(kProcesses);
  tracker().refresh();
  tracker().refresh();
  EXPECT_EQ(asked(), 0);
  std::vector<std::ptrdiff_t> counts;
  for (std::uint64_t turn = 1; turn <= 3; ++turn) {
    putAll(turn, 5);
    tree.setNewestPid(static_cast<std::int32_t>(kProcesses + turn));
    tracker().refresh();
    counts.push_back(asked());
  }
  EXPECT_EQ(counts, (std::vector<std::ptrdiff_t>{64, 128, 150}));
}

TEST_F(ProcessTrackerTest, LooksForTheNewParentOfAnOrphan) {
  tree.put({.pid = 2, .exe = "/usr/bin/init", .parent = 0});
  tree.put({.pid = 4, .exe = "/usr/bin/make", .parent = 2});
  tree.put({.pid = 9, .exe = "/usr/bin/cc", .parent = 4});
  tree.setNewestPid(9);
  tracker().refresh();
  EXPECT_EQ(tracker().parent(9), 4);
  EXPECT_EQ(tracker().parent(2), 0);
  EXPECT_EQ(tracker().parent(77), 0);
  tree.end(4);
  tree.put({.pid = 9, .exe = "/usr/bin/cc", .parent = 2});
  tracker().refresh();
  EXPECT_EQ(tracker().parent(9), 2);
}

TEST_F(ProcessTrackerTest, TreatsAParentThatIsYoungerThanItsChildAsAnotherProcess) {
  tree.put({.pid = 2, .exe = "/usr/bin/init", .parent = 0});
  tree.put({.pid = 9, .exe = "/usr/bin/cc", .start = 500, .parent = 30});
  tree.put({.pid = 30, .exe = "/usr/bin/other", .start = 900});
  tree.setNewestPid(30);
  tracker().refresh();
  tree.put({.pid = 9, .exe = "/usr/bin/cc", .start = 500, .parent = 2});
  EXPECT_EQ(tracker().parent(9), 2);
}

TEST_F(ProcessTrackerTest, KeepsAProcessThatEndsAfterItsClockWasRead) {
  tree.put({.pid = 4, .exe = "/usr/bin/a", .readBytes = 7});
  tree.setNewestPid(4);
  tracker().refresh();
  tracker().refresh();
  tree.end(4);
  tree.setClock(4, 8);
  tracker().refresh();
  EXPECT_EQ(process(4).cpuTime, 8u);
  EXPECT_EQ(process(4).path, "/usr/bin/a");
  EXPECT_EQ(process(4).io.readBytes, 7u);
  tree.end(4);
  tracker().refresh();
  EXPECT_EQ(pids(), std::vector<std::int32_t>{});
}

TEST_F(ProcessTrackerTest, TellsReapedTimeInTheUnitOfTheCpuTime) {
  EXPECT_EQ(tracker().fromTicks(3), 30'000'000u);
}

TEST_F(ProcessTrackerTest, TellsReapedTimeInTicksWithoutClocks) {
  tree.setClocksWork(false);
  EXPECT_EQ(tracker().fromTicks(3), 3u);
}

class ShellNamesTest : public ProcessTrackerTest {
 protected:
  void put(const ProcTree::Process& process, std::string arguments) {
    tree.put(process);
    std::ranges::replace(arguments, ' ', '\0');
    tree.setFile(process.pid, "cmdline", arguments + '\0');
  }
};

TEST_F(ShellNamesTest, AScriptIsKnownByItsOwnName) {
  put({.pid = 4, .exe = "/usr/bin/bash", .comm = "nightly-backup.", .parent = 0},
      "/bin/bash -eu /home/me/nightly-backup.sh");
  put({.pid = 5, .exe = "/usr/bin/dash", .comm = "sh", .parent = 0}, "sh build.sh");
  put({.pid = 6, .exe = "/usr/bin/bash", .comm = "bash", .parent = 0}, "-bash");
  put({.pid = 7, .exe = "/bin/busybox", .comm = "sh", .parent = 0}, "sh install");
  tree.setNewestPid(7);
  tracker().refresh();
  EXPECT_EQ(process(4).path, "/usr/bin/nightly-backup.sh");
  EXPECT_EQ(process(5).path, "/usr/bin/build.sh");
  EXPECT_EQ(process(6).path, "/usr/bin/bash");
  EXPECT_EQ(process(7).path, "/bin/install");
}

TEST_F(ShellNamesTest, ACommandGoesByTheNameOfTheProcessThatRunsIt) {
  tree.put({.pid = 4, .exe = "/usr/bin/make", .comm = "make", .parent = 0});
  put({.pid = 5, .exe = "/usr/bin/dash", .comm = "sh", .parent = 4}, "/bin/sh -c cc");
  put({.pid = 6, .exe = "/usr/bin/dash", .comm = "sh", .parent = 5}, "/bin/sh -c cc");
  put({.pid = 7, .exe = "/usr/bin/dash", .comm = "sh", .parent = 99}, "/bin/sh -c cc");
  put({.pid = 8, .exe = "/usr/bin/dash", .comm = "sh", .session = 8, .parent = 4}, "/bin/sh -c cc");
  tree.setNewestPid(8);
  tracker().refresh();
  EXPECT_EQ(process(5).path, "/usr/bin/make");
  EXPECT_EQ(process(6).path, "/usr/bin/make");
  EXPECT_EQ(process(7).path, "/usr/bin/dash") << "of which nobody knows who had it run";
  EXPECT_EQ(process(8).path, "/usr/bin/dash") << "in a session of its own";
}

TEST_F(ShellNamesTest, TheFirstWordOfAProcessTitleIsEnough) {
  tree.put({.pid = 4, .exe = "/usr/bin/node", .comm = "npm run build", .parent = 0});
  tree.put({.pid = 5, .exe = "/usr/bin/node", .comm = "my server", .parent = 0});
  tree.setNewestPid(5);
  tracker().refresh();
  EXPECT_EQ(process(4).path, "/usr/bin/npm");
  EXPECT_EQ(process(5).path, "/usr/bin/node");
}

}  // namespace
}  // namespace platform
