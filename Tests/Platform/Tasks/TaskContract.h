#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Platform/Support/ClosedStandardStreams.h"
#include "Tests/Platform/Support/TemporaryFolder.h"
#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

inline constexpr std::size_t kAmpleOutput = std::size_t{1} << 20;

/// Whether `condition` becomes true within ten seconds.
template <typename Condition>
bool eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

inline std::ptrdiff_t descriptorCount() {
  return std::distance(std::filesystem::directory_iterator("/dev/fd"), {});
}

/// Whether this process has a child, running or ended. Reaps none.
inline bool hasChild() {
  siginfo_t ignored{};
  return waitid(P_ALL, 0, &ignored, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
}

/// Launches shell scripts.
template <typename Launcher>
class ScriptTest : public ::testing::Test {
 protected:
  std::unique_ptr<tidewell::Task> start(const std::string& script,
                                        const std::vector<std::string>& arguments = {}) {
    tidewell::TaskLauncher::Launch launch = launcher_.launch(
        folder_.writeScript("tool" + std::to_string(++starts_), script), arguments);
    EXPECT_EQ(launch.error, "");
    EXPECT_NE(launch.task, nullptr);
    return std::move(launch.task);
  }

  /// The script makes this file to tell how far it has come.
  [[nodiscard]] bool isReady() const { return std::filesystem::exists(folder_.path("ready")); }
  [[nodiscard]] std::string sayReady() const { return ": > '" + folder_.path("ready") + "'\n"; }

  testing::TemporaryFolder folder_;
  Launcher launcher_;
  int starts_ = 0;
};

/// The contract of task launchers, which every system's launcher keeps. A tool's standard error is
/// lost, and its standard input is empty.
template <typename Launcher>
class TaskContract : public ScriptTest<Launcher> {};

TYPED_TEST_SUITE_P(TaskContract);

TYPED_TEST_P(TaskContract, SaysWhyAToolCannotBeLaunched) {
  for (const std::string& tool :
       {this->folder_.path("missing"), this->folder_.write("plain", "#!/bin/sh\n")}) {
    const tidewell::TaskLauncher::Launch launch = this->launcher_.launch(tool, {});
    EXPECT_EQ(launch.task, nullptr);
    EXPECT_NE(launch.error, "");
  }
}

TYPED_TEST_P(TaskContract, ReadsWhatTheToolPrints) {
  const auto task = this->start("echo one.1,2,3,; echo two.4,5,6,");
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "one.1,2,3,\ntwo.4,5,6,\n");
}

TYPED_TEST_P(TaskContract, HandsTheArgumentsOverAsTheyAre) {
  const auto task =
      this->start("for argument; do echo \"<$argument>\"; done", {"-P", "a b", "$HOME", ""});
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "<-P>\n<a b>\n<$HOME>\n<>\n");
}

TYPED_TEST_P(TaskContract, KeepsTheOutputOfAToolThatFails) {
  const auto task = this->start("echo before; exit 3");
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "before\n");
  EXPECT_TRUE(eventually([&] { return !task->isRunning(); }));
}

TYPED_TEST_P(TaskContract, PassesAnyBytes) {
  const auto task = this->start("printf 'a\\000\\377\\n\\n,'");
  EXPECT_EQ(task->readToEnd(kAmpleOutput), std::string("a\0\xFF\n\n,", 6));
}

TYPED_TEST_P(TaskContract, DropsWhatTheToolPrintsToStandardError) {
  const auto task = this->start("echo lost >&2; echo kept");
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "kept\n");
}

TYPED_TEST_P(TaskContract, GivesTheToolAnEmptyStandardInput) {
  const auto task = this->start("cat; echo end");
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "end\n");
}

TYPED_TEST_P(TaskContract, ReadsExactlyAsMuchAsTheLimit) {
  EXPECT_EQ(this->start("printf 12345")->readToEnd(5), "12345");
  EXPECT_EQ(this->start("printf 123456")->readToEnd(5), std::nullopt);
}

TYPED_TEST_P(TaskContract, StopsReadingAToolThatPrintsWithoutEnd) {
  const auto task = this->start("while :; do echo again and again; done");
  EXPECT_EQ(task->readToEnd(100'000), std::nullopt);
  EXPECT_TRUE(task->isRunning());
}

TYPED_TEST_P(TaskContract, TerminatesAToolThatHangsWithItsOutputOpen) {
  const auto task = this->start("echo begun\n" + this->sayReady() + "exec sleep 60");
  ASSERT_TRUE(eventually([&] { return this->isReady(); }));
  std::thread terminator([&] { task->terminate(); });
  const auto output = task->readToEnd(kAmpleOutput);
  terminator.join();
  EXPECT_TRUE(output.has_value());
  EXPECT_TRUE(eventually([&] { return !task->isRunning(); }));
}

TYPED_TEST_P(TaskContract, EndsAReadThatIsWaitingAlready) {
  const auto task = this->start("exec sleep 60");
  std::thread terminator([&] {
    // A waiting reader sleeps in the kernel. Ending the read earlier works as well.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    task->terminate();
  });
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "");
  terminator.join();
}

TYPED_TEST_P(TaskContract, EndsTheReadOfAToolThatIgnoresTheRequest) {
  const auto task = this->start("trap '' TERM\n" + this->sayReady() + "exec sleep 60");
  ASSERT_TRUE(eventually([&] { return this->isReady(); }));
  task->terminate();
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "");
  EXPECT_TRUE(task->isRunning());
}

TYPED_TEST_P(TaskContract, KnowsAToolThatGoesOnAfterItClosedItsOutput) {
  const auto task = this->start("echo done; exec >&-; exec sleep 60");
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "done\n");
  EXPECT_TRUE(task->isRunning());
  task->terminate();
  EXPECT_TRUE(eventually([&] { return !task->isRunning(); }));
}

TYPED_TEST_P(TaskContract, MayBeTerminatedAgainAfterItHasEnded) {
  const auto task = this->start("true");
  task->readToEnd(kAmpleOutput);
  ASSERT_TRUE(eventually([&] { return !task->isRunning(); }));
  task->terminate();
  task->terminate();
  EXPECT_FALSE(task->isRunning());
}

TYPED_TEST_P(TaskContract, TerminatesAToolThatStillRunsWhenItIsDestroyed) {
  auto task = this->start("trap ': > " + this->folder_.path("ended") + "; exit' TERM\n" +
                          this->sayReady() + "while :; do sleep 0.1; done");
  ASSERT_TRUE(eventually([&] { return this->isReady(); }));
  task.reset();
  EXPECT_TRUE(eventually([&] { return std::filesystem::exists(this->folder_.path("ended")); }));
}

TYPED_TEST_P(TaskContract, GivesNoTaskWhenTheLaunchFails) {
  EXPECT_EQ(this->launcher_.launch(this->folder_.path("missing"), {}).task, nullptr);
  EXPECT_FALSE(hasChild());
}

TYPED_TEST_P(TaskContract, GivesTheToolNoOtherDescriptor) {
  const Descriptor inheritable(dup(STDERR_FILENO));
  ASSERT_TRUE(inheritable);
  // The shell itself has its script open. `echo` lists the descriptors without opening one.
  const auto task =
      this->start("for n in 3 4 5 6 7 8 9; do [ -e /dev/fd/$n ] && echo $n; done; true");
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "");
}

TYPED_TEST_P(TaskContract, GivesTheToolItsStreamsWhenTheProgramHasNone) {
  std::optional<testing::ClosedStandardStreams> closed(std::in_place);
  const auto task = this->start("cat; echo lost >&2; echo kept");
  const auto output = task->readToEnd(kAmpleOutput);
  closed.reset();
  EXPECT_EQ(output, "kept\n");
}

TYPED_TEST_P(TaskContract, GivesTheToolUnblockedSignalsWhateverItsLauncherBlocks) {
  sigset_t all;
  sigset_t former;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &former);
  const auto task = this->start("kill -TERM $$; echo survived");
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "");
}

TYPED_TEST_P(TaskContract, GivesTheToolDefaultSignalsWhateverItsLauncherIgnores) {
  const auto former = std::signal(SIGPIPE, SIG_IGN);
  const auto task = this->start("kill -PIPE $$; echo survived");
  std::signal(SIGPIPE, former);
  EXPECT_EQ(task->readToEnd(kAmpleOutput), "");
}

TYPED_TEST_P(TaskContract, LeavesNoProcessAndNoDescriptorBehind) {
  const std::ptrdiff_t before = descriptorCount();
  this->start("true");
  this->start("exec sleep 600");
  this->start("echo read")->readToEnd(kAmpleOutput);
  EXPECT_TRUE(eventually([] { return !hasChild(); }));
  EXPECT_EQ(descriptorCount(), before);
}

TYPED_TEST_P(TaskContract, KillsAToolThatIgnoresTheRequestWhenItIsDestroyed) {
  auto task = this->start("trap '' TERM\n" + this->sayReady() + "exec sleep 600");
  ASSERT_TRUE(eventually([&] { return this->isReady(); }));
  task.reset();
  EXPECT_TRUE(eventually([] { return !hasChild(); }));
}

TYPED_TEST_P(TaskContract, ReapsOnlyItsOwnChild) {
  const auto other = this->start("exec sleep 600");
  this->start("true").reset();
  EXPECT_TRUE(other->isRunning());
}

REGISTER_TYPED_TEST_SUITE_P(
    TaskContract, SaysWhyAToolCannotBeLaunched, ReadsWhatTheToolPrints,
    HandsTheArgumentsOverAsTheyAre, KeepsTheOutputOfAToolThatFails, PassesAnyBytes,
    DropsWhatTheToolPrintsToStandardError, ReadsExactlyAsMuchAsTheLimit,
    GivesTheToolAnEmptyStandardInput, StopsReadingAToolThatPrintsWithoutEnd,
    TerminatesAToolThatHangsWithItsOutputOpen, EndsAReadThatIsWaitingAlready,
    EndsTheReadOfAToolThatIgnoresTheRequest, KnowsAToolThatGoesOnAfterItClosedItsOutput,
    MayBeTerminatedAgainAfterItHasEnded, TerminatesAToolThatStillRunsWhenItIsDestroyed,
    GivesNoTaskWhenTheLaunchFails, GivesTheToolNoOtherDescriptor,
    GivesTheToolItsStreamsWhenTheProgramHasNone,
    GivesTheToolUnblockedSignalsWhateverItsLauncherBlocks,
    GivesTheToolDefaultSignalsWhateverItsLauncherIgnores, LeavesNoProcessAndNoDescriptorBehind,
    KillsAToolThatIgnoresTheRequestWhenItIsDestroyed, ReapsOnlyItsOwnChild);

}  // namespace platform
