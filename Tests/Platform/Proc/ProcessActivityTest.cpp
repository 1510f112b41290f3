#include "Platform/Linux/Proc/ProcessActivity.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Tests/Platform/Support/ChildProgram.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using testing::ChildProgram;
using namespace std::chrono_literals;
using Doing = ProcessActivity::Doing;

class ProcessActivityTest : public ::testing::Test {
 protected:
  /// What the process does in so many seconds of this test.
  Doing watch(std::int32_t pid, std::chrono::milliseconds time = 300ms) {
    const auto begin = std::chrono::steady_clock::now();
    activity.begin({pid});
    std::this_thread::sleep_for(time);
    return activity.end(std::chrono::steady_clock::now() - begin).at(pid);
  }
  bool eventually(std::int32_t pid, const std::function<bool(const Doing&)>& holds) {
    for (int attempt = 0; attempt < 100; ++attempt) {
      if (holds(watch(pid, 100ms))) return true;
    }
    return false;
  }

  ProcFileSystem proc;
  KernelCpuClock cpuClock;
  ProcessActivity activity{proc, cpuClock};
};

TEST_F(ProcessActivityTest, SeesThatAProcessWorks) {
  const ChildProgram worker({"sh", "-c", "while :; do :; done"});
  EXPECT_TRUE(eventually(worker.pid(), [](const Doing& doing) {
    return !doing.isGone && !doing.isQuiet && doing.cpuPercent > 5;
  }));
}

TEST_F(ProcessActivityTest, SeesThatAProcessIsQuietAndSinceWhen) {
  const ChildProgram sleeper({"sleep", "1000"});
  EXPECT_TRUE(eventually(sleeper.pid(), [](const Doing& doing) {
    return doing.isQuiet && doing.cpuPercent == 0.0 &&
           (!doing.quietFor || doing.quietFor->count() >= 0.1);
  }));
}

TEST_F(ProcessActivityTest, CountsTheWorkOfWhatAProcessHasStarted) {
  // The worker outlives its starter, but not for long.
  const ChildProgram starter({"sh", "-c", "(ulimit -t 10; while :; do :; done) & wait"});
  EXPECT_TRUE(eventually(
      starter.pid(), [](const Doing& doing) { return !doing.isQuiet && doing.cpuPercent > 5; }));
}

TEST_F(ProcessActivityTest, CountsTheWorkOfChildrenThatEndMeanwhile) {
  const ChildProgram starter({"sh", "-c", "while :; do /bin/true; done"});
  EXPECT_TRUE(eventually(starter.pid(), [](const Doing& doing) { return !doing.isQuiet; }));
}

TEST_F(ProcessActivityTest, KnowsThatAProcessIsGone) {
  auto sleeper = std::make_unique<ChildProgram>(std::vector<std::string>{"sleep", "1000"});
  const std::int32_t pid = sleeper->pid();
  activity.begin({pid});
  sleeper = nullptr;
  const Doing doing = activity.end(tidewell::Seconds(1)).at(pid);
  EXPECT_TRUE(doing.isGone);
  EXPECT_EQ(doing.cpuPercent, std::nullopt);
}

TEST_F(ProcessActivityTest, ClaimsNothingOfAProcessThatIsHiddenFromView) {
  // A folder in which there is no process, as where others' are hidden.
  const testing::TemporaryFolder empty;
  ProcFileSystem hidden(empty.path());
  ProcessActivity blind(hidden, cpuClock);
  blind.begin({::getpid()});
  const Doing doing = blind.end(tidewell::Seconds(1)).at(::getpid());
  EXPECT_FALSE(doing.isGone);
  EXPECT_FALSE(doing.isQuiet);
  EXPECT_EQ(doing.cpuPercent, std::nullopt);
}

}  // namespace
}  // namespace platform
