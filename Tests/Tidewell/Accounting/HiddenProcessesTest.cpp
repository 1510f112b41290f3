// Some processes may not be read, because they belong to another user: `sudo`, for example.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Tidewell/Accounting/ConservedTable.h"

namespace tidewell {
namespace {

class HiddenProcessesTest : public ConservedTable {
 protected:
  std::int32_t spawnHidden(std::int32_t parent, const std::string& path) {
    const auto pid = kernel.spawn(parent, path);
    kernel.processes.at(pid).hidden = true;
    return pid;
  }
};

// A hidden process gets the number of a process that ended.

TEST_F(HiddenProcessesTest, AProcessHasEndedIfAHiddenOneHasItsNumber) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 5, 50);
  pass();
  const auto account = accounts.accountOf(job);
  kernel.endAndReap(job);
  ASSERT_EQ(spawnHidden(1, "/sbin/daemon"), job);
  pass();
  EXPECT_EQ(used("job"), (Usage{5, 50}));
  EXPECT_EQ(used("sh"), Usage()) << "the shell is not credited with what was seen";
  EXPECT_EQ(listed, (std::vector<std::int32_t>{1, shell, job, account.value()}));
}

TEST_F(HiddenProcessesTest, AHiddenProcessOfTheSameParentIsKnownByItsStart) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 5);
  pass();
  kernel.endAndReap(job);
  ASSERT_EQ(spawnHidden(shell, "/usr/bin/sudo"), job);
  pass();
  EXPECT_EQ(used("job").time, 5u);
  EXPECT_EQ(used("sh").time, 0u);
}

class BecomesHidden : public HiddenProcessesTest, public testing::WithParamInterface<bool> {};

TEST_P(BecomesHidden, IsStillTheSameProcess) {
  kernel.tellsStart = GetParam();
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 5);
  pass();
  kernel.processes.at(job).hidden = true;
  pass();
  kernel.endAndReap(shell);
  pass();
  ASSERT_EQ(kernel.parent(job), 1) << "another parent does not make it another process";
  pass();
  EXPECT_EQ(used("job").time, 5u);
  ASSERT_TRUE(accounts.accountOf(job));
  EXPECT_EQ(listed, (std::vector<std::int32_t>{1, job})) << "no account of its own is listed";
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutStart, BecomesHidden, testing::Bool());

// A hidden process stands between a worker and the process that is charged for it in the end.

TEST_F(HiddenProcessesTest, CountsAWorkerOnceThatEndsTogetherWithItsHiddenParent) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto sudo = spawnHidden(shell, "/usr/bin/sudo");
  const auto worker = kernel.spawn(sudo, "/bin/worker");
  pass();
  kernel.work(worker, 50, 500);
  pass();
  kernel.endAndReap(worker);
  kernel.endAndReap(sudo);
  pass();
  EXPECT_EQ(used("worker"), (Usage{50, 500}));
  EXPECT_EQ(used("sh"), Usage());
}

TEST_F(HiddenProcessesTest, CountsAWorkerOnceIfItsHiddenParentEndsLater) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto sudo = spawnHidden(shell, "/usr/bin/sudo");
  const auto worker = kernel.spawn(sudo, "/bin/worker");
  kernel.work(worker, 50, 500);
  pass();
  kernel.endAndReap(worker);
  for (int tick = 0; tick < 5; ++tick)
    pass();
  EXPECT_EQ(usedAtEnd("worker"), (Usage{50, 500}));
  kernel.work(sudo, 3, 30);
  kernel.endAndReap(sudo);
  pass();
  pass();
  EXPECT_EQ(usedAtEnd("worker"), (Usage{50, 500}));
  EXPECT_EQ(used("sh"), (Usage{3, 30})) << "the hidden process used this itself, unseen";
}

TEST_F(HiddenProcessesTest, CountsWorkersOnceBelowSeveralHiddenProcesses) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto sudo = spawnHidden(shell, "/usr/bin/sudo");
  const auto monitor = spawnHidden(sudo, "/usr/bin/sudo");
  const auto worker = kernel.spawn(monitor, "/bin/worker");
  pass();
  const auto other = kernel.spawn(monitor, "/bin/other");
  kernel.work(worker, 50, 500);
  kernel.work(other, 20, 200);
  pass();
  kernel.endAndReap(worker);
  pass();
  kernel.endAndReap(other);
  kernel.endAndReap(monitor);
  pass();
  kernel.endAndReap(sudo);
  pass();
  EXPECT_EQ(usedAtEnd("worker"), (Usage{50, 500}));
  EXPECT_EQ(usedAtEnd("other"), (Usage{20, 200}));
  EXPECT_EQ(used("sh"), Usage());
}

TEST_F(HiddenProcessesTest, CountsAWorkerOnceThatAHiddenProcessHasInherited) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto keeper = spawnHidden(shell, "/usr/bin/keeper");
  const auto starter = kernel.spawn(shell, "/bin/starter");
  const auto worker = kernel.spawn(starter, "/bin/worker");
  kernel.work(worker, 50, 500);
  pass();
  kernel.end(starter, keeper);
  kernel.reap(starter);
  pass();
  kernel.endAndReap(worker);
  pass();
  kernel.endAndReap(keeper);
  pass();
  EXPECT_EQ(usedAtEnd("worker"), (Usage{50, 500}));
  EXPECT_EQ(used("sh"), Usage());
}

TEST_F(HiddenProcessesTest, CreditsTheChildOfAHiddenProcessWithItsLastStretch) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto sudo = spawnHidden(shell, "/usr/bin/sudo");
  const auto worker = kernel.spawn(sudo, "/bin/worker");
  kernel.work(worker, 50);
  pass();
  kernel.work(worker, 10);
  kernel.endAndReap(worker);
  kernel.endAndReap(sudo);
  pass();
  EXPECT_EQ(used("worker").time, 60u);
  EXPECT_EQ(used("sh").time, 0u);
}

TEST_F(HiddenProcessesTest, CountsAChildOnceIfItsHiddenReaperCanBeReadLater) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto server = spawnHidden(shell, "/usr/bin/server");
  const auto worker = kernel.spawn(server, "/bin/worker");
  kernel.work(worker, 50, 500);
  pass();
  kernel.work(server, 3, 30);
  kernel.endAndReap(worker);
  pass();
  // The server may be read now.
  kernel.processes.at(server).hidden = false;
  pass();
  EXPECT_EQ(usedAtEnd("worker"), (Usage{50, 500}));
  EXPECT_EQ(used("server"), (Usage{3, 30}));
  kernel.work(server, 2, 20);
  kernel.endAndReap(server);
  pass();
  pass();
  EXPECT_EQ(usedAtEnd("server"), (Usage{5, 50}));
  EXPECT_EQ(total, (Usage{55, 550}));
}

TEST_F(HiddenProcessesTest, AHiddenParentIsListedOnceAndCannotBeRead) {
  const auto sudo = spawnHidden(1, "/usr/bin/sudo");
  const auto worker = kernel.spawn(sudo, "/bin/worker");
  pass();
  EXPECT_EQ(listed, (std::vector<std::int32_t>{1, sudo, worker}));
  pass();
  EXPECT_EQ(listed, (std::vector<std::int32_t>{1, sudo, worker}));
  ResourceUsage usage;
  EXPECT_FALSE(table.resourceUsage(sudo, usage));
}

}  // namespace
}  // namespace tidewell
