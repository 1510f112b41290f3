#include "Tidewell/Accounting/ConservedProcesses.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Tests/Fakes/FakeRunningApplications.h"
#include "Tests/Tidewell/Accounting/ConservedTable.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

using ConservedProcessesTest = ConservedTable;

TEST_F(ConservedProcessesTest, CountsTheExampleOfTheHeader) {
  using Counts = std::map<std::string, Usage>;
  const auto make = kernel.spawn(1, "/bin/make");
  const auto first = kernel.spawn(make, "/bin/cc");
  kernel.work(make, 1);
  kernel.work(first, 3);
  pass();
  EXPECT_EQ(counted, (Counts{{"init", {}}, {"make", {1, 0}}, {"cc", {3, 0}}}));
  EXPECT_EQ(total.time, 4U);
  kernel.work(first, 2);
  kernel.endAndReap(first);
  pass();
  EXPECT_EQ(counted, (Counts{{"init", {}}, {"make", {1, 0}}, {"cc", {5, 0}}}));
  EXPECT_EQ(total.time, 6U);
  const auto second = kernel.spawn(make, "/bin/cc");
  kernel.work(second, 4);
  kernel.endAndReap(second);
  pass();
  EXPECT_EQ(used("make"), (Usage{5, 0}));
  EXPECT_EQ(ended, std::set<std::string>{"cc"});
  EXPECT_EQ(total.time, 10U);
  const auto third = kernel.spawn(make, "/bin/cc");
  kernel.work(third, 2);
  pass();
  EXPECT_EQ(used("make"), (Usage{5, 0}));
  EXPECT_EQ(used("cc"), (Usage{2, 0}));
  EXPECT_EQ(total.time, 12U);
}

TEST_F(ConservedProcessesTest, KeepsWhatAnEndedProcessHadUsedUnderItsName) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto compiler = kernel.spawn(shell, "/bin/cc1");
  kernel.work(compiler, 6, 60);
  pass();
  kernel.endAndReap(compiler);
  pass();
  EXPECT_EQ(used("cc1"), (Usage{6, 60}));
  EXPECT_EQ(used("sh"), (Usage{0, 0}));
}

TEST_F(ConservedProcessesTest, CreditsTheLastStretchToTheProcessThatHadBeenSeen) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto compiler = kernel.spawn(shell, "/bin/cc1");
  kernel.work(compiler, 6, 60);
  pass();
  kernel.work(compiler, 2, 20);
  kernel.endAndReap(compiler);
  pass();
  EXPECT_EQ(used("cc1"), (Usage{8, 80}));
  EXPECT_EQ(used("sh"), (Usage{0, 0}));
}

TEST_F(ConservedProcessesTest, CreditsNoMoreThanAsMuchAgainAsHadBeenSeen) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto compiler = kernel.spawn(shell, "/bin/cc1");
  kernel.work(compiler, 2, 10);
  pass();
  kernel.work(compiler, 8, 80);
  kernel.endAndReap(compiler);
  pass();
  EXPECT_EQ(used("cc1"), (Usage{4, 30}));
  EXPECT_EQ(used("sh"), (Usage{6, 60}));
}

TEST_F(ConservedProcessesTest, ALoopOfLongerCommandsGoesOnUnderOneName) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  auto command = kernel.spawn(shell, "/bin/rsync");
  std::uint64_t former = 0;
  for (int tick = 0; tick < 30; ++tick) {
    // One command ends late in every third interval, so the next has not worked yet at the pass.
    kernel.work(command, 2);
    if (tick % 3 == 2) {
      kernel.endAndReap(command);
      command = kernel.spawn(shell, "/bin/rsync");
    }
    pass();
    EXPECT_EQ(used("rsync").time, former + 2) << tick;
    former = used("rsync").time;
  }
}

TEST_F(ConservedProcessesTest, CreditsTheParentWithAProcessThatLivedBetweenTwoPasses) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  pass();
  for (int unit = 0; unit < 5; ++unit) {
    const auto compiler = kernel.spawn(shell, "/bin/cc1");
    kernel.work(compiler, 1, 7);
    kernel.endAndReap(compiler);
  }
  pass();
  EXPECT_EQ(used("sh"), (Usage{5, 35}));
  EXPECT_FALSE(counted.contains("cc1"));
}

TEST_F(ConservedProcessesTest, CreditsTheGrandparentIfTheParentWasNeverSeenEither) {
  const auto make = kernel.spawn(1, "/bin/make");
  pass();
  const auto driver = kernel.spawn(make, "/bin/gcc");
  const auto compiler = kernel.spawn(driver, "/bin/cc1");
  kernel.work(compiler, 4, 9);
  kernel.endAndReap(compiler);
  kernel.endAndReap(driver);
  pass();
  EXPECT_EQ(used("make"), (Usage{4, 9}));
}

TEST_F(ConservedProcessesTest, CountsNothingTwiceWhenADriverAndItsChildEndTogether) {
  const auto make = kernel.spawn(1, "/bin/make");
  const auto driver = kernel.spawn(make, "/bin/gcc");
  const auto compiler = kernel.spawn(driver, "/bin/cc1");
  kernel.work(compiler, 400, 40);
  kernel.work(driver, 100, 10);
  pass();
  kernel.work(compiler, 200, 20);
  kernel.endAndReap(compiler);
  kernel.endAndReap(driver);
  pass();
  // Nobody knows which of the two used the rest, so they share it like what had been seen of them.
  EXPECT_EQ(used("cc1"), (Usage{560, 56}));
  EXPECT_EQ(used("gcc"), (Usage{140, 14}));
  EXPECT_EQ(used("make"), (Usage{0, 0}));
}

TEST_F(ConservedProcessesTest, LeavesWhatWasUsedBeforeAnExecUnderTheFormerName) {
  const auto program = kernel.spawn(1, "/bin/sh");
  kernel.work(program, 3, 30);
  pass();
  kernel.exec(program, "/bin/ffmpeg");
  kernel.work(program, 2, 20);
  pass();
  EXPECT_EQ(used("sh"), (Usage{3, 30}));
  EXPECT_EQ(used("ffmpeg"), (Usage{2, 20}));
}

TEST_F(ConservedProcessesTest, KnowsThatANumberBelongsToAnotherProcessNow) {
  const auto first = kernel.spawn(1, "/bin/a");
  kernel.work(first, 5);
  pass();
  kernel.endAndReap(first);
  const auto second = kernel.spawn(1, "/bin/b");
  ASSERT_EQ(first, second);
  kernel.work(second, 9);
  pass();
  EXPECT_EQ(used("a").time, 5u);
  EXPECT_EQ(used("b").time, 9u);
}

TEST_F(ConservedProcessesTest, CountsNothingTwiceWhenAnOrphanIsReapedByItsHeir) {
  const auto manager = kernel.spawn(1, "/bin/manager");
  const auto shell = kernel.spawn(manager, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 8, 80);
  pass();
  kernel.end(shell, manager);
  kernel.reap(shell);
  kernel.work(job, 1, 10);
  kernel.endAndReap(job);
  pass();
  EXPECT_EQ(used("job"), (Usage{9, 90}));
  EXPECT_EQ(used("manager"), (Usage{0, 0}));
  EXPECT_EQ(total.time, 9u);
}

TEST_F(ConservedProcessesTest, LosesOnlyTheUnseenPartOfAProcessThatNobodyReaps) {
  const auto daemon = kernel.spawn(1, "/bin/daemon");
  kernel.processes[daemon].reapsNobody = true;
  const auto job = kernel.spawn(daemon, "/bin/job");
  kernel.work(job, 8, 80);
  pass();
  kernel.work(job, 1, 10);
  kernel.end(job);
  pass();
  pass();
  EXPECT_EQ(usedAtEnd("job"), (Usage{8, 80}));
  EXPECT_EQ(used("daemon"), (Usage{0, 0}));
  // A process that the daemon reaps later is not mistaken for that job.
  kernel.processes[daemon].reapsNobody = false;
  const auto other = kernel.spawn(daemon, "/bin/other");
  kernel.work(other, 3);
  kernel.endAndReap(other);
  pass();
  EXPECT_EQ(used("daemon").time, 3u);
}

TEST_F(ConservedProcessesTest, CountsOnceTheChildrenThatAMacChargesTwice) {
  kernel.beAMac();
  const auto daemon = kernel.spawn(1, "/bin/daemon");
  kernel.processes[daemon].reapsNobody = true;
  const auto job = kernel.spawn(daemon, "/bin/job");
  kernel.work(job, 8);
  pass();
  kernel.work(job, 1);
  kernel.end(job);
  const auto unseen = kernel.spawn(daemon, "/bin/unseen");
  kernel.work(unseen, 30);
  kernel.end(unseen);
  ASSERT_EQ(kernel.processes[daemon].reaped, 78u);
  pass();
  EXPECT_EQ(used("job").time + used("daemon").time, 39u);
  EXPECT_EQ(total.time, 39u);
}

TEST_F(ConservedProcessesTest, CountsOnceTheDoubleChargeInAFirstReadingOnAMac) {
  kernel.beAMac();
  pass();
  const auto daemon = kernel.spawn(1, "/bin/daemon");
  kernel.processes[daemon].reapsNobody = true;
  const auto job = kernel.spawn(daemon, "/bin/job");
  kernel.work(job, 30);
  kernel.end(job);
  pass();
  EXPECT_EQ(used("daemon").time, 30u);
}

TEST_F(ConservedProcessesTest, CountsAllOfAnUnreapedProcessOnAMac) {
  kernel.beAMac();
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 5);
  pass();
  kernel.work(job, 2);
  kernel.end(job);
  pass();
  EXPECT_EQ(used("job").time, 7u) << "although nobody has reaped it yet";
  kernel.reap(job);
  pass();
  EXPECT_EQ(used("job").time, 7u);
  EXPECT_EQ(used("sh").time, 0u);
}

TEST_F(ConservedProcessesTest, KeepsTheUsageThatAMacChargesToNobody) {
  kernel.beAMac();
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 5);
  pass();
  kernel.end(job);
  pass();
  kernel.endAndReap(shell);
  ASSERT_EQ(kernel.processes.at(1).reaped, 0u);
  pass();
  pass();
  EXPECT_EQ(total.time, 5u);
}

TEST_F(ConservedProcessesTest, TakesAChildThatWasReapedDuringThePassForEnded) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 5, 50);
  pass();
  // The list still has the job, and the job is read. Then the shell reaps the job and is read.
  struct LateReaper : ProcessTable {
    LateReaper(SimulatedKernel& simulated, std::int32_t reaped) : kernel(simulated), job(reaped) {}
    ProcessSnapshot snapshot() override {
      const ProcessSnapshot snapshot = kernel.snapshot();
      pids.assign(snapshot.processes.rbegin(), snapshot.processes.rend());
      return {pids, snapshot.applications};
    }
    bool resourceUsage(std::int32_t pid, ResourceUsage& usage) override {
      return kernel.resourceUsage(pid, usage);
    }
    std::string_view path(std::int32_t pid) override { return kernel.path(pid); }
    std::int32_t parent(std::int32_t pid) override { return kernel.parent(pid); }
    bool isAlive(std::int32_t pid) override { return kernel.isAlive(pid) && pid != job; }
    bool diskIncludesReaped() override { return true; }
    Timebase timebase() override { return kernel.timebase(); }
    SimulatedKernel& kernel;
    std::int32_t job;
    std::vector<std::int32_t> pids;
  };
  LateReaper late(kernel, 0);
  ConservedProcesses conserved({late, clock, accounts, 1000});
  conserved.snapshot();
  // From here on the counters of the shell include the job, which is still listed.
  kernel.processes[shell].reaped += 5;
  kernel.processes[shell].disk += 50;
  late.job = job;
  clock.advance(2s);
  conserved.snapshot();
  ResourceUsage usage;
  ASSERT_TRUE(conserved.resourceUsage(shell, usage));
  EXPECT_EQ(usage.userTime, 0u);
  EXPECT_EQ(usage.diskBytesRead, 0u);
  EXPECT_FALSE(conserved.resourceUsage(job, usage));
}

TEST_F(ConservedProcessesTest, DropsTimeThatNoProcessorCouldHaveGivenSinceTheLastPass) {
  ConservedProcesses two({kernel, clock, accounts, 2});
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/usr/bin/secret");
  kernel.unreadable = job;
  clock.advance(2s);
  two.snapshot();
  kernel.work(job, 80'000, 8'000);
  kernel.endAndReap(job);
  kernel.unreadable = 0;
  clock.advance(2s);
  two.snapshot();
  ResourceUsage usage;
  ASSERT_TRUE(two.resourceUsage(shell, usage));
  EXPECT_EQ(usage.userTime, 5u);  // Two processors, two seconds, and a margin.
  EXPECT_EQ(usage.diskBytesRead, 8000u);
  clock.advance(2s);
  two.snapshot();
  ASSERT_TRUE(two.resourceUsage(shell, usage));
  EXPECT_EQ(usage.userTime, 5u);
}

TEST_F(ConservedProcessesTest, ListsAnAccountBehindTheProcessesUnderANumberOfItsOwn) {
  const auto job = kernel.spawn(1, "/bin/job");
  kernel.work(job, 5);
  pass();
  const auto account = accounts.accountOf(job);
  ASSERT_TRUE(account);
  EXPECT_GE(*account, AccountBook::kFirstIdentifier);
  EXPECT_EQ(listed, (std::vector<std::int32_t>{1, job})) << "nothing is in the account yet";
  kernel.endAndReap(job);
  pass();
  EXPECT_EQ(listed, (std::vector<std::int32_t>{1, *account}));
  EXPECT_EQ(accounts.accountOf(job), account) << "the directory knows it for a while";
}

TEST_F(ConservedProcessesTest, ListsAnAccountThatAnotherMeasurementUses) {
  const auto job = kernel.spawn(1, "/bin/job");
  pass();
  const auto account = accounts.accountOf(job);
  ASSERT_TRUE(account);
  accounts.noteUse(*account);
  pass();
  EXPECT_EQ(listed, (std::vector<std::int32_t>{1, job, *account}));
}

TEST_F(ConservedProcessesTest, AProcessThatTakesAnotherNameGetsAnotherAccount) {
  const auto job = kernel.spawn(1, "/bin/sh");
  pass();
  const auto former = accounts.accountOf(job);
  kernel.exec(job, "/bin/ffmpeg");
  pass();
  EXPECT_NE(accounts.accountOf(job), former);
  const auto other = kernel.spawn(1, "/bin/ffmpeg");
  pass();
  EXPECT_EQ(accounts.accountOf(job), accounts.accountOf(other)) << "one account per name";
}

TEST_F(ConservedProcessesTest, ListsAnAccountThatAnotherMeasurementUsesForOnePassMore) {
  const auto job = kernel.spawn(1, "/bin/job");
  pass();
  const auto account = accounts.accountOf(job);
  ASSERT_TRUE(account);
  kernel.endAndReap(job);
  accounts.noteUse(*account);
  pass();
  EXPECT_EQ(listed, (std::vector<std::int32_t>{1, *account}));
  pass();
  EXPECT_EQ(listed, (std::vector<std::int32_t>{1, *account}))
      << "the monitor reads the measurement one pass later";
  pass();
  EXPECT_EQ(listed, std::vector<std::int32_t>{1});
}

TEST_F(ConservedProcessesTest, DropsTheAccountOfAnEndedNameWhenItDoesNotGrowAnyMore) {
  const auto job = kernel.spawn(1, "/bin/job");
  const auto other = kernel.spawn(1, "/bin/job");
  kernel.work(job, 3, 30);
  kernel.work(other, 4, 40);
  pass();
  kernel.endAndReap(job);
  pass();
  pass();
  EXPECT_EQ(used("job"), (Usage{7, 70})) << "another of that name still runs";
  kernel.endAndReap(other);
  pass();
  EXPECT_EQ(used("job"), (Usage{7, 70}));
  pass();
  EXPECT_TRUE(ended.contains("job"));
  EXPECT_EQ(total, (Usage{7, 70})) << "nothing is lost";
}

TEST_F(ConservedProcessesTest, ANameThatItsOnlyProcessGaveUpByAnExecHasEnded) {
  const auto job = kernel.spawn(1, "/bin/sh");
  kernel.work(job, 3, 30);
  pass();
  kernel.exec(job, "/bin/ffmpeg");
  pass();
  EXPECT_EQ(used("sh"), (Usage{3, 30}));
  pass();
  EXPECT_TRUE(ended.contains("sh"));
  EXPECT_EQ(used("ffmpeg"), (Usage{0, 0}));
}

TEST_F(ConservedProcessesTest, OfManyNamesOnlyTheLastHasAnAccount) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  for (int number = 0; number < 400; ++number) {
    const auto job = kernel.spawn(shell, "/bin/job" + std::to_string(number));
    kernel.work(job, 3, 30);
    pass();
    kernel.endAndReap(job);
  }
  pass();
  EXPECT_EQ(total, (Usage{1200, 12'000}));
  EXPECT_EQ(listed.size(), 2u + 1u) << "two processes, and the account of the last job";
  EXPECT_EQ(used("job399"), (Usage{3, 30}));
}

TEST_F(ConservedProcessesTest, KeepsWhatAnEndedHelperHadUsedUnderItsApplication) {
  const auto helper = kernel.spawn(1, "/opt/editor/helper");
  const auto properties = std::make_shared<int>(0);
  kernel.applications.push_back(
      std::make_shared<FakeRunningApplication>(helper, "org.example.Editor", "Editor", properties));
  kernel.work(helper, 6, 60);
  pass();
  kernel.endAndReap(helper);
  kernel.applications.clear();
  clock.advance(2s);
  const auto applications = table.snapshot().applications;
  ASSERT_EQ(applications.size(), 1u);
  EXPECT_EQ(applications[0]->processIdentifier(), accounts.accountOf(helper));
  EXPECT_EQ(applications[0]->bundleIdentifier(), "org.example.Editor");
  EXPECT_EQ(applications[0]->localizedName(), "Editor");
  ResourceUsage usage;
  ASSERT_TRUE(table.resourceUsage(applications[0]->processIdentifier(), usage));
  EXPECT_EQ(usage.userTime, 6u);
  EXPECT_EQ(usage.diskBytesRead, 60u);
}

TEST_F(ConservedProcessesTest, CountsNothingTwiceOfAChildThatIsReapedLongAfterItsEnd) {
  kernel.hidesZombies = true;
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 5);
  pass();
  kernel.end(job);
  for (int tick = 0; tick < 5; ++tick) {
    pass();
    EXPECT_EQ(used("job").time, 5u) << tick;
  }
  kernel.reap(job);
  pass();
  pass();
  EXPECT_EQ(usedAtEnd("job").time, 5u);
  EXPECT_EQ(used("sh").time, 0u);
}

TEST_F(ConservedProcessesTest, KeepsWhatAProcessHadThatMayNoLongerBeRead) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 5);
  pass();
  kernel.unreadable = job;
  kernel.work(job, 2);
  pass();
  pass();
  EXPECT_EQ(used("job").time, 5u);
  kernel.endAndReap(job);
  kernel.unreadable = 0;
  pass();
  EXPECT_EQ(used("job").time, 7u);
  EXPECT_EQ(used("sh").time, 0u);
}

TEST_F(ConservedProcessesTest, CountsNothingTwiceWhenAChainEndsWhileItIsRead) {
  const auto first = kernel.spawn(1, "/bin/first");
  const auto make = kernel.spawn(1, "/bin/make");
  const auto shell = kernel.spawn(make, "/bin/sh");
  kernel.endAndReap(first);
  const auto compiler = kernel.spawn(shell, "/bin/cc1");
  ASSERT_LT(compiler, make) << "so it is read first";
  kernel.work(compiler, 50, 5);
  pass();
  kernel.beforeReading = [&](std::int32_t pid) {
    if (pid != make || !kernel.processes.contains(shell)) return;
    kernel.endAndReap(compiler);
    kernel.endAndReap(shell);
  };
  pass();
  pass();
  EXPECT_EQ(total.time, 50u);
  EXPECT_EQ(total.disk, 5u);
}

TEST_F(ConservedProcessesTest, KeepsWhatAProcessReapedOnThePassInWhichItEnds) {
  const auto first = kernel.spawn(1, "/bin/first");
  const auto make = kernel.spawn(1, "/bin/make");
  kernel.endAndReap(first);
  const auto shell = kernel.spawn(make, "/bin/sh");
  ASSERT_LT(shell, make) << "so it is read first";
  pass();
  const auto compiler = kernel.spawn(shell, "/bin/cc1");
  kernel.work(compiler, 30, 3);
  kernel.endAndReap(compiler);
  kernel.beforeReading = [&](std::int32_t pid) {
    if (pid == make && kernel.processes.contains(shell)) kernel.endAndReap(shell);
  };
  pass();
  pass();
  EXPECT_EQ(total.time, 30u);
  EXPECT_EQ(total.disk, 3u);
}

TEST_F(ConservedProcessesTest, CountsNothingTwiceOfACounterThatGoesBackwards) {
  const auto job = kernel.spawn(1, "/bin/job");
  kernel.work(job, 50, 50);
  pass();
  kernel.processes.at(job).own = 10;
  pass();
  kernel.processes.at(job).own = 52;
  pass();
  EXPECT_EQ(used("job").time, 52u);
}

TEST_F(ConservedProcessesTest, AProcessKeepsItsOwnBytesIfThoseOfChildrenAreNotAddedToThem) {
  kernel.addsReapedDisk = false;
  const auto archiver = kernel.spawn(1, "/bin/archiver");
  const auto helper = kernel.spawn(archiver, "/bin/helper");
  kernel.work(helper, 10);
  pass();
  kernel.work(helper, 5);
  kernel.work(archiver, 1, 1000);
  kernel.endAndReap(helper);
  pass();
  EXPECT_EQ(used("archiver").disk, 1000u);
  EXPECT_EQ(used("helper").disk, 0u);
}

}  // namespace
}  // namespace tidewell
