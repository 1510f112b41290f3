// Tests that nothing that real processes used is lost or counted twice.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Platform/Linux/Text/IcuText.h"
#include "Platform/Linux/Time/SystemClock.h"
#include "Tests/Platform/Support/TemporaryFolder.h"
#include "Tidewell/Accounting/ConservedProcesses.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using Steady = std::chrono::steady_clock;

class NobodysApplications : public ApplicationResolver {
 public:
  std::shared_ptr<const ApplicationIdentity> applicationOf(const ProcessFacts&) override {
    return nullptr;
  }
  void refresh() override {}
};

/// A driver that starts one worker after the other, all under a unique name, and then stands still,
/// so that the name has not ended.
class Driver {
 public:
  /// Each worker counts up to `steps`.
  Driver(int workers, int steps) : program_(folder_.path("worker-" + std::to_string(getpid()))) {
    std::filesystem::copy_file("/bin/sh", program_);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    const std::string work =
        "j=0; while [ $j -lt " + std::to_string(steps) + " ]; do j=$((j+1)); done";
    const std::string script = "i=0; while [ $i -lt " + std::to_string(workers) +
                               " ]; do \"$0\" -c '" + work +
                               "'; i=$((i+1)); done; echo; kill -STOP $$";
    pid_ = fork();
    if (pid_ == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      dup2(ends[1], STDOUT_FILENO);
      execl(program_.c_str(), program_.c_str(), "-c", script.c_str(), program_.c_str(), nullptr);
      _exit(127);
    }
    close(ends[1]);
    finished_ = Descriptor(ends[0]);
  }
  ~Driver() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  [[nodiscard]] pid_t pid() const { return pid_; }
  [[nodiscard]] const std::string& program() const { return program_; }

  /// Whether all workers have ended, after a wait of `patience` at most.
  [[nodiscard]] bool hasFinished(std::chrono::milliseconds patience) const {
    pollfd descriptor{finished_.get(), POLLIN, 0};
    return poll(&descriptor, 1, static_cast<int>(patience.count())) > 0;
  }

 private:
  testing::TemporaryFolder folder_;
  std::string program_;
  Descriptor finished_;
  pid_t pid_ = 0;
};

/// The time in seconds that the kernel has charged to `pid` and the children that it reaped.
double charged(ProcFileSystem& proc, pid_t pid) {
  const auto text = proc.read(pid, "stat");
  const auto stat = text ? parseProcStat(*text) : std::nullopt;
  if (!stat) return -1;
  return static_cast<double>(stat->userTicks + stat->systemTicks + stat->childUserTicks +
                             stat->childSystemTicks) /
         static_cast<double>(sysconf(_SC_CLK_TCK));
}

class ConservedProcessesLiveTest : public ::testing::Test {
 protected:
  /// `self` is the process whose children are its tools; 0 for none.
  explicit ConservedProcessesLiveTest(std::int32_t self = 0)
      : conserved({table, clock, accounts, 64, self}) {}

  /// The time in seconds that is counted under the driver's path.
  double counted(const std::string& program) {
    double sum = 0;
    for (const std::int32_t pid : conserved.snapshot().processes) {
      tidewell::ResourceUsage usage;
      if (conserved.path(pid) != program || !conserved.resourceUsage(pid, usage)) continue;
      sum += static_cast<double>(usage.userTime + usage.systemTime) / 1e9;
    }
    return sum;
  }

  /// Lets the driver do its work, and checks that all of it was counted exactly once.
  void countAll(const Driver& driver) {
    double last = 0;
    const auto end = Steady::now() + 150s;
    while (!driver.hasFinished(50ms) && Steady::now() < end) {
      const double now = counted(driver.program());
      EXPECT_GE(now, last) << "the sum went backwards";
      last = now;
    }
    counted(driver.program());
    const double all = charged(proc, driver.pid());
    EXPECT_GT(all, 0.3) << "too little work to tell";
    // The kernel tells the time of ended children in hundredths of a second, rounded down.
    EXPECT_NEAR(counted(driver.program()), all, 0.05);
  }

  ProcFileSystem proc;
  KernelCpuClock cpuClock;
  NobodysApplications applications;
  IcuText text;
  ProcessTracker tracker{ProcessTracker::Sources{proc, cpuClock, applications, text}};
  LinuxProcessTable table{tracker};
  SystemClock clock;
  tidewell::AccountDirectory accounts;
  tidewell::ConservedProcesses conserved;
};

TEST_F(ConservedProcessesLiveTest, CountsTheWorkOfShortProcessesWhole) {
  counted("");
  countAll(Driver(60, 20'000));
}

TEST_F(ConservedProcessesLiveTest, CountsTheWorkOfLongerProcessesOnce) {
  counted("");
  countAll(Driver(4, 500'000));
}

class ConservedProcessesWithToolsLiveTest : public ConservedProcessesLiveTest {
 protected:
  ConservedProcessesWithToolsLiveTest() : ConservedProcessesLiveTest(getpid()) {}

  /// The time in seconds that is counted for this process itself.
  double countedOfSelf() {
    conserved.snapshot();
    tidewell::ResourceUsage usage;
    EXPECT_TRUE(conserved.resourceUsage(getpid(), usage));
    return static_cast<double>(usage.userTime + usage.systemTime) / 1e9;
  }

  static double usedBySelf() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  }
};

TEST_F(ConservedProcessesWithToolsLiveTest, LeavesOutTheWorkOfAToolThatItSees) {
  const double before = countedOfSelf() - usedBySelf();
  {
    const Driver tool(20, 50'000);
    const auto end = Steady::now() + 150s;
    while (!tool.hasFinished(50ms) && Steady::now() < end)
      EXPECT_EQ(counted(tool.program()), 0);
    EXPECT_GT(charged(proc, tool.pid()), 0.3) << "too little work to tell";
  }
  // The tool was reaped, so its time is charged to this process.
  countedOfSelf();
  EXPECT_NEAR(countedOfSelf() - usedBySelf(), before, 0.05);
}

TEST_F(ConservedProcessesWithToolsLiveTest, LeavesOutTheWorkOfAToolThatComesAndGoesUnseen) {
  const double before = countedOfSelf() - usedBySelf();
  {
    const Driver tool(20, 50'000);
    ASSERT_TRUE(tool.hasFinished(150s));
    EXPECT_GT(charged(proc, tool.pid()), 0.3) << "too little work to tell";
  }
  countedOfSelf();
  EXPECT_NEAR(countedOfSelf() - usedBySelf(), before, 0.05);
}

}  // namespace
}  // namespace platform
