// The process table, asked of the test itself and of a child.

#include "Platform/MacOS/Processes/LibprocProcessTable.h"

#include <gtest/gtest.h>
#include <mach-o/dyld.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

extern char** environ;

namespace platform {
namespace {

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

void burn(double wanted) {
  timespec time{};
  do {
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  } while (static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9 < wanted);
}

/// sleep(1) for a minute, killed and reaped at the end.
class Sleeper {
 public:
  Sleeper() {
    std::string program = "/bin/sleep";
    std::string time = "60";
    char* arguments[] = {program.data(), time.data(), nullptr};
    EXPECT_EQ(posix_spawn(&pid_, program.c_str(), nullptr, nullptr, arguments, environ), 0);
  }
  ~Sleeper() { end(); }
  Sleeper(const Sleeper&) = delete;
  Sleeper& operator=(const Sleeper&) = delete;

  [[nodiscard]] pid_t pid() const { return pid_; }
  /// Kills it and waits until it has ended, without reaping it.
  void endUnreaped() const {
    kill(pid_, SIGKILL);
    siginfo_t told{};
    EXPECT_EQ(waitid(P_PID, static_cast<id_t>(pid_), &told, WEXITED | WNOWAIT), 0);
  }
  void end() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = 0;
  }

 private:
  pid_t pid_ = 0;
};

class LibprocProcessTableTest : public ::testing::Test {
 protected:
  std::vector<std::int32_t> pids() {
    const tidewell::ProcessSnapshot snapshot = table.snapshot();
    return {snapshot.processes.begin(), snapshot.processes.end()};
  }

  std::string path(pid_t pid) { return std::string(table.path(pid)); }

  LibprocProcessTable table{[] { return KernelSnapshot::Applications(); }};
};

TEST_F(LibprocProcessTableTest, ListsThisProcessItsParentAndItsChild) {
  const Sleeper child;
  const std::vector<std::int32_t> all = pids();
  for (const pid_t pid : {getpid(), getppid(), child.pid()})
    EXPECT_EQ(std::ranges::count(all, pid), 1) << pid;
}

TEST_F(LibprocProcessTableTest, FillsNoMoreThanThereIsRoomFor) {
  std::array<std::int32_t, 3> buffer{0, 0, -7};
  EXPECT_EQ(LibprocProcessTable::listPids(std::span(buffer).first(2)), 8);
  EXPECT_EQ(buffer[2], -7);
}

TEST_F(LibprocProcessTableTest, CountsTheTimeThatTheKernelCharges) {
  burn(0.4);
  tidewell::ResourceUsage usage;
  ASSERT_TRUE(table.resourceUsage(getpid(), usage));
  rusage charged{};
  getrusage(RUSAGE_SELF, &charged);
  const tidewell::Timebase timebase = table.timebase();
  const double counted = static_cast<double>(usage.userTime + usage.systemTime) *
                         static_cast<double>(timebase.numer) / static_cast<double>(timebase.denom) /
                         1e9;
  const double expected = seconds(charged.ru_utime) + seconds(charged.ru_stime);
  EXPECT_GE(expected, 0.4);
  EXPECT_NEAR(counted, expected, expected * 0.1);
}

TEST_F(LibprocProcessTableTest, TellsTheProgramOfAProcess) {
  std::array<char, 4096> own{};
  auto size = static_cast<std::uint32_t>(own.size());
  ASSERT_EQ(_NSGetExecutablePath(own.data(), &size), 0);
  EXPECT_EQ(path(getpid()), std::filesystem::canonical(own.data()).string());
  EXPECT_EQ(path(Sleeper().pid()), "/bin/sleep");
  EXPECT_EQ(path(-5), "");
}

TEST_F(LibprocProcessTableTest, TellsTheParentOfAProcess) {
  EXPECT_EQ(table.parent(getpid()), getppid());
  EXPECT_EQ(table.parent(Sleeper().pid()), getpid());
  EXPECT_EQ(table.parent(-5), 0);
}

TEST_F(LibprocProcessTableTest, KnowsWhetherAProcessLives) {
  Sleeper child;
  const pid_t pid = child.pid();
  EXPECT_TRUE(table.isAlive(getpid()));
  EXPECT_TRUE(table.isAlive(1)) << "of another user";
  EXPECT_TRUE(table.isAlive(pid));
  child.end();
  EXPECT_FALSE(table.isAlive(pid));
}

TEST_F(LibprocProcessTableTest, TellsOfAProcessThatWaitsToBeReapedAllButItsPath) {
  const Sleeper child;
  tidewell::ResourceUsage before;
  ASSERT_TRUE(table.resourceUsage(child.pid(), before));
  child.endUnreaped();
  EXPECT_EQ(std::ranges::count(pids(), child.pid()), 1);
  tidewell::ResourceUsage usage;
  ASSERT_TRUE(table.resourceUsage(child.pid(), usage));
  EXPECT_EQ(usage.startTime, before.startTime);
  EXPECT_GE(usage.userTime + usage.systemTime, before.userTime + before.systemTime);
  EXPECT_TRUE(table.isAlive(child.pid()));
  EXPECT_EQ(table.parent(child.pid()), getpid());
  EXPECT_EQ(path(child.pid()), "");
}

TEST_F(LibprocProcessTableTest, KnowsWhoIsChargedTwiceForItsChildren) {
  EXPECT_FALSE(table.isChargedTwice(getpid()));
  tidewell::ResourceUsage before;
  ASSERT_TRUE(table.resourceUsage(getpid(), before));
  struct sigaction former {};
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  ASSERT_EQ(sigaction(SIGCHLD, &ignore, &former), 0);
  EXPECT_TRUE(table.isChargedTwice(getpid()));
  const pid_t child = fork();
  if (child == 0) {
    burn(0.3);
    _exit(0);
  }
  while (kill(child, 0) == 0) usleep(10'000);
  sigaction(SIGCHLD, &former, nullptr);
  tidewell::ResourceUsage after;
  ASSERT_TRUE(table.resourceUsage(getpid(), after));
  const tidewell::Timebase timebase = table.timebase();
  const double charged = static_cast<double>(after.reapedTime - before.reapedTime) *
                         static_cast<double>(timebase.numer) / static_cast<double>(timebase.denom) /
                         1e9;
  EXPECT_NEAR(charged, 0.6, 0.15) << "twice what it used";
  EXPECT_FALSE(table.isChargedTwice(getpid()));
}

TEST_F(LibprocProcessTableTest, TellsNothingOfAProcessThatHasEnded) {
  Sleeper child;
  const pid_t pid = child.pid();
  child.end();
  tidewell::ResourceUsage usage;
  EXPECT_FALSE(table.resourceUsage(pid, usage));
  EXPECT_EQ(path(pid), "");
  EXPECT_EQ(table.parent(pid), 0);
}

}  // namespace
}  // namespace platform
