// Nothing that real processes used is lost, and nothing is counted twice.

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Platform/Linux/System/SystemClock.h"
#include "Platform/Linux/Unicode/IcuText.h"
#include "Tidewell/ConservedProcesses.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;

class NoApplications : public ApplicationResolver, public tidewell::RunningApplications {
 public:
  std::shared_ptr<const ApplicationIdentity> applicationOf(const ProcessFacts&) override {
    return nullptr;
  }
  void refresh() override {}
  std::span<const std::shared_ptr<const tidewell::RunningApplication>> all() override { return {}; }
  std::shared_ptr<const tidewell::RunningApplication> withProcessIdentifier(std::int32_t) override {
    return nullptr;
  }
};

void burn(std::chrono::milliseconds cpu) {
  timespec time{};
  const auto used = [&] {
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  };
  const auto end = used() + cpu;
  while (used() < end) {
  }
}

/// A driver that starts one short worker after the other, each under the name "worker", and ends
/// by itself after `count` of them.
class Driver {
 public:
  Driver(int count, std::chrono::milliseconds each) : pid_(fork()) {
    if (pid_ != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_NAME, "driver");
    for (int worker = 0; worker < count; ++worker) {
      const pid_t child = fork();
      if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        burn(each);
        _exit(0);
      }
      waitpid(child, nullptr, 0);
    }
    pause();
    _exit(0);
  }
  ~Driver() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  [[nodiscard]] pid_t pid() const { return pid_; }

 private:
  pid_t pid_;
};

class ConservedProcessesLiveTest : public testing::Test {
 protected:
  /// The time of all that is counted under this program's path, in seconds.
  double counted() {
    conserved.all();
    std::vector<std::int32_t> pids(static_cast<std::size_t>(conserved.listPids({})) / 4);
    conserved.listPids(pids);
    const std::string own = pathOf(getpid());
    double sum = 0;
    for (const std::int32_t pid : pids) {
      tidewell::ResourceUsage usage;
      if (pid == getpid() || pathOf(pid) != own || !conserved.resourceUsage(pid, usage)) continue;
      sum += static_cast<double>(usage.userTime + usage.systemTime) / 1e9;
    }
    return sum;
  }

  std::string pathOf(std::int32_t pid) {
    const int length = conserved.path(pid, path_);
    return {path_.data(), static_cast<std::size_t>(std::max(length, 0))};
  }

  ProcFileSystem proc;
  KernelCpuClock cpuClock;
  NoApplications applications;
  IcuText text;
  ProcessTracker tracker{ProcessTracker::Sources{proc, cpuClock, applications, text}};
  LinuxProcessTable table{tracker};
  SystemClock clock;
  tidewell::ProcessAccounts accounts;
  tidewell::ConservedProcesses conserved{{table, applications, clock, accounts, 64}};

 private:
  std::array<char, tidewell::ProcessTable::kPathCapacity> path_{};
};

/// What the kernel has charged `pid` and the children that it reaped, in seconds.
double charged(ProcFileSystem& proc, pid_t pid) {
  const auto text = proc.read(pid, "stat");
  const auto stat = text ? parseProcStat(*text) : std::nullopt;
  if (!stat) return -1;
  return static_cast<double>(stat->userTicks + stat->systemTicks + stat->childUserTicks +
                             stat->childSystemTicks) /
         static_cast<double>(sysconf(_SC_CLK_TCK));
}

TEST_F(ConservedProcessesLiveTest, CountsTheWorkOfShortProcessesWhole) {
  counted();
  const Driver driver(60, 20ms);
  const double before = counted();
  double last = before;
  const auto end = Steady::now() + 30s;
  while (charged(proc, driver.pid()) < 1.19 && Steady::now() < end) {
    usleep(70'000);
    const double now = counted();
    EXPECT_GE(now, last) << "the sum went backwards";
    last = now;
  }
  counted();
  // Both of the kernel's halves are cut to hundredths.
  EXPECT_NEAR(counted(), charged(proc, driver.pid()), 0.05);
  EXPECT_GT(counted(), 1.15);
}

TEST_F(ConservedProcessesLiveTest, CountsTheWorkOfLongerProcessesOnce) {
  counted();
  const Driver driver(4, 300ms);
  double last = 0;
  const auto end = Steady::now() + 30s;
  while (charged(proc, driver.pid()) < 1.19 && Steady::now() < end) {
    usleep(40'000);
    const double now = counted();
    EXPECT_GE(now, last) << "the sum went backwards";
    last = now;
  }
  counted();
  EXPECT_NEAR(counted(), charged(proc, driver.pid()), 0.05);
}

}  // namespace
}  // namespace platform
