#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Tests/Platform/Support/PausedChild.h"
#include "Tidewell/Ports/ProcessTable.h"

extern char** environ;

namespace platform {

/// The contract of process tables, which every system's table keeps, tested with real children. A
/// `Table` has a process table as its `table`.
template <typename Table>
class ProcessTableContract : public ::testing::Test {
 protected:
  std::vector<std::int32_t> pids() {
    const tidewell::ProcessSnapshot snapshot = table_.snapshot();
    return {snapshot.processes.begin(), snapshot.processes.end()};
  }

  double inSeconds(std::uint64_t time) {
    const tidewell::Timebase timebase = table_.timebase();
    return static_cast<double>(time) * static_cast<double>(timebase.numer) /
           static_cast<double>(timebase.denom) / 1e9;
  }

  /// The present usage of the process. The test fails when there is none.
  tidewell::ResourceUsage usageNow(pid_t pid) {
    tidewell::ResourceUsage usage;
    table_.snapshot();
    EXPECT_TRUE(table_.resourceUsage(pid, usage));
    return usage;
  }

  static pid_t startSleep() {
    std::string program = "/bin/sleep";
    std::string time = "60";
    char* arguments[] = {program.data(), time.data(), nullptr};
    pid_t pid = 0;
    // Returns when the new program has replaced the child.
    EXPECT_EQ(posix_spawn(&pid, program.c_str(), nullptr, nullptr, arguments, environ), 0);
    return pid;
  }
  static void stop(pid_t pid) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }

  Table owner_;
  tidewell::ProcessTable& table_ = owner_.table;
};

TYPED_TEST_SUITE_P(ProcessTableContract);

TYPED_TEST_P(ProcessTableContract, ListsThisProcessItsParentAndItsChildOnceEach) {
  const testing::PausedChild child([] {});
  const std::vector<std::int32_t> all = this->pids();
  for (const pid_t pid : {getpid(), getppid(), child.pid()})
    EXPECT_EQ(std::ranges::count(all, pid), 1) << pid;
}

TYPED_TEST_P(ProcessTableContract, CountsTheTimeThatTheKernelCharges) {
  testing::PausedChild child([] { testing::burn(0.4); });
  const tidewell::ResourceUsage usage = this->usageNow(child.pid());
  const rusage charged = child.end();
  const double expected = testing::seconds(charged.ru_utime) + testing::seconds(charged.ru_stime);
  EXPECT_GE(expected, 0.4);
  EXPECT_NEAR(this->inSeconds(usage.userTime + usage.systemTime), expected, expected * 0.1);
}

TYPED_TEST_P(ProcessTableContract, CountsTheTimeOfReapedChildrenApart) {
  const testing::PausedChild child([] { testing::PausedChild([] { testing::burn(0.4); }).end(); });
  const tidewell::ResourceUsage usage = this->usageNow(child.pid());
  // A sanitizer makes the end of a process dear.
  EXPECT_GT(this->inSeconds(usage.reapedTime), 0.3);
  EXPECT_LT(this->inSeconds(usage.reapedTime), 0.7);
  EXPECT_LT(this->inSeconds(usage.userTime + usage.systemTime), 0.3);
}

TYPED_TEST_P(ProcessTableContract, CountsTheBytesThatWentToTheDisk) {
  const std::string file = std::filesystem::current_path() / "process-table-contract.data";
  constexpr std::size_t kBlock = std::size_t{1} << 20;
  testing::PausedChild child([&] {
    const int output = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const std::vector<char> block(kBlock, 'x');
    for (int count = 0; count < 8; ++count) {
      if (write(output, block.data(), block.size()) < 0) _exit(1);
    }
    fsync(output);
    close(output);
  });
  std::filesystem::remove(file);
  const tidewell::ResourceUsage usage = this->usageNow(child.pid());
  if (usage.diskBytesWritten == 0) GTEST_SKIP() << "this file system charges nobody for writes";
  EXPECT_NEAR(static_cast<double>(usage.diskBytesWritten), 8.0 * kBlock, 0.8 * kBlock);
}

TYPED_TEST_P(ProcessTableContract, TellsTheStartOfAProcess) {
  const testing::PausedChild child([] {});
  const std::uint64_t first = this->usageNow(child.pid()).startTime;
  EXPECT_NE(first, 0U);
  EXPECT_EQ(this->usageNow(child.pid()).startTime, first);
  // Both may have started in one tick of the clock that the kernel goes by.
  EXPECT_GE(first, this->usageNow(getpid()).startTime);
}

TYPED_TEST_P(ProcessTableContract, TellsTheProgramOfAProcess) {
  const pid_t sleep = this->startSleep();
  this->table_.snapshot();
  EXPECT_EQ(this->table_.path(sleep), std::filesystem::canonical("/bin/sleep").string());
  EXPECT_EQ(this->table_.path(-5), "");
  this->stop(sleep);
}

TYPED_TEST_P(ProcessTableContract, TellsTheParentOfAProcess) {
  const testing::PausedChild child([] {});
  this->table_.snapshot();
  EXPECT_EQ(this->table_.parent(getpid()), getppid());
  EXPECT_EQ(this->table_.parent(child.pid()), getpid());
  EXPECT_EQ(this->table_.parent(-5), 0);
}

TYPED_TEST_P(ProcessTableContract, KnowsAnEndedProcessUntilItIsReaped) {
  testing::PausedChild child([] { testing::burn(0.1); });
  const pid_t pid = child.pid();
  this->usageNow(pid);
  EXPECT_TRUE(this->table_.isAlive(pid));
  child.killWithoutReaping();
  const tidewell::ResourceUsage usage = this->usageNow(pid);
  EXPECT_GE(this->inSeconds(usage.userTime + usage.systemTime), 0.09);
  EXPECT_EQ(std::ranges::count(this->pids(), pid), 1);
  EXPECT_TRUE(this->table_.isAlive(pid));
  child.end();
  EXPECT_FALSE(this->table_.isAlive(pid));
}

TYPED_TEST_P(ProcessTableContract, TellsNothingOfAProcessThatIsReaped) {
  testing::PausedChild child([] {});
  const pid_t pid = child.pid();
  this->usageNow(pid);
  child.end();
  EXPECT_EQ(std::ranges::count(this->pids(), pid), 0);
  tidewell::ResourceUsage usage;
  EXPECT_FALSE(this->table_.resourceUsage(pid, usage));
  EXPECT_EQ(this->table_.path(pid), "");
  EXPECT_EQ(this->table_.parent(pid), 0);
}

TYPED_TEST_P(ProcessTableContract, KnowsThatAnotherUsersProcessLivesButNotItsUsage) {
  if (getuid() != 0) GTEST_SKIP() << "only root can play two users";
  const testing::PausedChild child([] {});
  // A user without rights looks at a process of root.
  const pid_t looker = fork();
  if (looker == 0) {
    if (setgid(65534) != 0 || setuid(65534) != 0) _exit(2);
    TypeParam others;
    others.table.snapshot();
    tidewell::ResourceUsage usage;
    const bool isRefused = !others.table.resourceUsage(child.pid(), usage);
    _exit(isRefused && others.table.isAlive(child.pid()) ? 0 : 1);
  }
  int status = -1;
  waitpid(looker, &status, 0);
  EXPECT_EQ(status, 0);
}

REGISTER_TYPED_TEST_SUITE_P(ProcessTableContract, ListsThisProcessItsParentAndItsChildOnceEach,
                            CountsTheTimeThatTheKernelCharges, CountsTheTimeOfReapedChildrenApart,
                            CountsTheBytesThatWentToTheDisk, TellsTheStartOfAProcess,
                            TellsTheProgramOfAProcess, TellsTheParentOfAProcess,
                            KnowsAnEndedProcessUntilItIsReaped, TellsNothingOfAProcessThatIsReaped,
                            KnowsThatAnotherUsersProcessLivesButNotItsUsage);

}  // namespace platform
