// Tests the tracker with the real /proc and real children.

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Platform/Linux/Processes/ProcessTracker.h"
#include "Platform/Linux/Text/IcuText.h"
#include "Tests/Platform/Processes/NoApplications.h"
#include "Tests/Platform/Support/PausedChild.h"

namespace platform {
namespace {

using testing::burn;
using testing::PausedChild;

class LiveProcessesTest : public ::testing::Test {
 protected:
  LiveProcessesTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "live-XXXXXX").string();
    folder = mkdtemp(pattern.data());
  }
  ~LiveProcessesTest() override { std::filesystem::remove_all(folder); }

  /// Starts a copy of sleep(1) as `name`, waits until it is that program, and returns its pid.
  pid_t startAs(const std::string& name) {
    const auto program = folder / name;
    std::filesystem::copy_file("/bin/sleep", program);
    std::string path = program;
    std::string time = "60";
    char* arguments[] = {path.data(), time.data(), nullptr};
    pid_t pid = 0;
    // Returns when the new program has replaced the child.
    EXPECT_EQ(posix_spawn(&pid, path.c_str(), nullptr, nullptr, arguments, environ), 0);
    return pid;
  }
  static void stop(pid_t pid) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }

  std::filesystem::path folder;
  ProcFileSystem proc;
  KernelCpuClock clock;
  NoApplications applications;
  IcuText text;
  ProcessTracker tracker{ProcessTracker::Sources{proc, clock, applications, text}};
};

TEST_F(LiveProcessesTest, SeesItselfAndItsParent) {
  tracker.refresh();
  ASSERT_NE(tracker.find(getpid()), nullptr);
  EXPECT_EQ(tracker.find(getpid())->parentPid, getppid());
  EXPECT_NE(tracker.find(getppid()), nullptr);
}

TEST_F(LiveProcessesTest, NamesProgramsWithOddNames) {
  const std::vector<std::pair<std::string, std::string>> names = {
      {"two words", "two words"},
      {"a) S 1 (b", "a) S 1 (b"},
      {"line\nfeed",
       "line\xEF\xBF\xBD"
       "feed"},
      {"broken\xff", "broken\xEF\xBF\xBD"},
      {"it's (deleted)", "it's"},
  };
  for (const auto& [name, expected] : names) {
    const pid_t pid = startAs(name);
    tracker.refresh();
    const TrackedProcess* process = tracker.find(pid);
    ASSERT_NE(process, nullptr) << name;
    EXPECT_EQ(process->path, (folder / expected).string());
    stop(pid);
  }
}

TEST_F(LiveProcessesTest, NamesAProgramWhoseFileWasDeleted) {
  const pid_t pid = startAs("tool");
  std::filesystem::remove(folder / "tool");
  tracker.refresh();
  const TrackedProcess* process = tracker.find(pid);
  ASSERT_NE(process, nullptr);
  EXPECT_EQ(process->path, (folder / "tool").string());
  stop(pid);
}

TEST_F(LiveProcessesTest, DropsAProcessWhenItIsReaped) {
  PausedChild child([] {});
  tracker.refresh();
  ASSERT_NE(tracker.find(child.pid()), nullptr);
  const pid_t pid = child.pid();
  child.end();
  tracker.refresh();
  EXPECT_EQ(tracker.find(pid), nullptr);
}

TEST_F(LiveProcessesTest, KeepsTheCountsOfAProcessThatNobodyHasReaped) {
  PausedChild child([] { burn(0.05); });
  tracker.refresh();
  const std::string path(std::string_view(tracker.find(child.pid())->path));
  child.killWithoutReaping();
  tracker.refresh();
  const TrackedProcess* process = tracker.find(child.pid());
  ASSERT_NE(process, nullptr);
  EXPECT_GE(process->cpuTime, 50'000'000u);
  EXPECT_EQ(process->path, path);
}

TEST_F(LiveProcessesTest, TellsNothingOfAProcessThatEndedBeforeItWasSeen) {
  tracker.refresh();
  PausedChild child([] {});
  child.killWithoutReaping();
  tracker.refresh();
  const TrackedProcess* process = tracker.find(child.pid());
  ASSERT_NE(process, nullptr);
  EXPECT_TRUE(process->path.empty());
}

TEST_F(LiveProcessesTest, FindsWhatTheKernelSaysIsThereAndNothingElse) {
  tracker.refresh();
  const auto before = proc.pids();
  tracker.refresh();
  const auto after = proc.pids();
  ASSERT_TRUE(before);
  ASSERT_TRUE(after);
  // Processes come and go during the test, so only those count that were there all the time.
  for (const std::int32_t pid : *before) {
    if (!std::ranges::binary_search(*after, pid)) continue;
    EXPECT_NE(tracker.find(pid), nullptr) << pid;
  }
  for (const auto& process : tracker.processes()) {
    const bool wasThere = std::ranges::binary_search(*before, process.pid) ||
                          std::ranges::binary_search(*after, process.pid);
    EXPECT_TRUE(wasThere || !tracker.isAlive(process.pid)) << process.pid;
  }
}

TEST_F(LiveProcessesTest, NeverTakesAThreadForAProcess) {
  KernelCpuClock kernel;
  EXPECT_TRUE(kernel.nanoseconds(getpid()));
  std::atomic<int> thread = 0;
  std::jthread other([&](const std::stop_token& stop) {
    thread = gettid();
    while (!stop.stop_requested())
      std::this_thread::yield();
  });
  while (thread == 0)
    std::this_thread::yield();
  EXPECT_FALSE(kernel.nanoseconds(thread));
}

TEST_F(LiveProcessesTest, SeesAnotherUsersProcessAsRefused) {
  if (getuid() != 0) GTEST_SKIP() << "only root can play two users";
  // A user without rights looks at a process of root.
  PausedChild child([] {});
  const pid_t looker = fork();
  if (looker == 0) {
    if (setgid(65534) != 0 || setuid(65534) != 0) _exit(2);
    ProcessTracker others{ProcessTracker::Sources{proc, clock, applications, text}};
    others.refresh();
    const TrackedProcess* process = others.find(child.pid());
    LinuxProcessTable table(others);
    tidewell::ResourceUsage usage;
    _exit(process && process->access == TrackedProcess::Access::refused &&
                  !table.resourceUsage(child.pid(), usage)
              ? 0
              : 1);
  }
  int status = 0;
  waitpid(looker, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(LiveProcessesTest, ASnapshotListsAllProcessesAscending) {
  LinuxProcessTable table(tracker);
  const auto pids = table.snapshot().processes;
  EXPECT_TRUE(std::ranges::binary_search(pids, getpid()));
  EXPECT_TRUE(std::ranges::is_sorted(pids));
  EXPECT_EQ(table.path(getpid()), std::filesystem::read_symlink("/proc/self/exe").string());
  EXPECT_EQ(table.path(-5), "");
}

}  // namespace
}  // namespace platform
