#include "Platform/Linux/System/SpawnedTask.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Linux/System/SpawnedTaskLauncher.h"
#include "Tests/Platform/Tasks/TemporaryFolder.h"

namespace platform {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kAmple = std::size_t{1} << 20;

/// Whether `condition` comes true within ten seconds.
template <typename Condition>
bool eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(1ms);
  }
  return true;
}

std::ptrdiff_t descriptorCount() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::distance(begin(descriptors), end(descriptors));
}

bool hasChild() {
  return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD;
}

class SpawnedTaskTest : public testing::Test {
 protected:
  std::unique_ptr<tidewell::Task> start(const std::string& script,
                                        const std::vector<std::string>& arguments = {}) {
    tidewell::TaskLauncher::Launch launch = launcher_.launch(
        folder_.writeScript("tool" + std::to_string(++starts_), script), arguments);
    EXPECT_EQ(launch.error, "");
    EXPECT_NE(launch.task, nullptr);
    return std::move(launch.task);
  }

  /// The script says that it has come so far by making this file.
  [[nodiscard]] bool isReady() const { return std::filesystem::exists(folder_.path("ready")); }
  [[nodiscard]] std::string sayReady() const { return ": > '" + folder_.path("ready") + "'\n"; }

  TemporaryFolder folder_;
  SpawnedTaskLauncher launcher_;
  int starts_ = 0;
};

TEST_F(SpawnedTaskTest, ReadsWhatTheToolPrints) {
  const auto task = start("echo one.1,2,3,; echo two.4,5,6,");
  EXPECT_EQ(task->readToEnd(kAmple), "one.1,2,3,\ntwo.4,5,6,\n");
}

TEST_F(SpawnedTaskTest, HandsTheArgumentsOverAsTheyAre) {
  const auto task =
      start("for argument; do echo \"<$argument>\"; done", {"-P", "a b", "$HOME", ""});
  EXPECT_EQ(task->readToEnd(kAmple), "<-P>\n<a b>\n<$HOME>\n<>\n");
}

TEST_F(SpawnedTaskTest, SaysInTheSystemsWordsWhyAToolCannotBeLaunched) {
  EXPECT_EQ(launcher_.launch(folder_.path("missing"), {}).error, "No such file or directory");
  EXPECT_EQ(launcher_.launch(folder_.write("plain", "#!/bin/sh\n"), {}).error, "Permission denied");
}

TEST_F(SpawnedTaskTest, GivesNoTaskWhenTheLaunchFails) {
  EXPECT_EQ(launcher_.launch(folder_.path("missing"), {}).task, nullptr);
  EXPECT_FALSE(hasChild());
}

TEST_F(SpawnedTaskTest, KeepsTheOutputOfAToolThatFails) {
  const auto task = start("echo before; exit 3");
  EXPECT_EQ(task->readToEnd(kAmple), "before\n");
  EXPECT_TRUE(eventually([&] { return !task->isRunning(); }));
}

TEST_F(SpawnedTaskTest, PassesAnyBytes) {
  const auto task = start("printf 'a\\000\\377\\n\\n,'");
  EXPECT_EQ(task->readToEnd(kAmple), std::string("a\0\xFF\n\n,", 6));
}

TEST_F(SpawnedTaskTest, DropsWhatTheToolPrintsToStandardError) {
  const auto task = start("echo lost >&2; echo kept");
  EXPECT_EQ(task->readToEnd(kAmple), "kept\n");
}

TEST_F(SpawnedTaskTest, GivesTheToolAnEmptyStandardInput) {
  const auto task = start("cat; echo end");
  EXPECT_EQ(task->readToEnd(kAmple), "end\n");
}

TEST_F(SpawnedTaskTest, GivesTheToolNoOtherDescriptor) {
  const Descriptor inheritable(dup(STDERR_FILENO));
  ASSERT_TRUE(inheritable);
  // The shell itself opens its script, and `echo` needs no descriptor to list them.
  const auto task =
      start("for n in 3 4 5 6 7 8 9; do [ -e /proc/self/fd/$n ] && echo $n; done; true");
  EXPECT_EQ(task->readToEnd(kAmple), "");
}

TEST_F(SpawnedTaskTest, GivesTheToolUnblockedSignalsWhateverItsLauncherBlocks) {
  sigset_t all;
  sigset_t former;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &former);
  const auto task = start("kill -TERM $$; echo survived");
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
  EXPECT_EQ(task->readToEnd(kAmple), "");
}

TEST_F(SpawnedTaskTest, GivesTheToolDefaultSignalsWhateverItsLauncherIgnores) {
  const auto former = std::signal(SIGPIPE, SIG_IGN);
  const auto task = start("kill -PIPE $$; echo survived");
  std::signal(SIGPIPE, former);
  EXPECT_EQ(task->readToEnd(kAmple), "");
}

TEST_F(SpawnedTaskTest, ReadsExactlyAsMuchAsTheLimit) {
  EXPECT_EQ(start("printf 12345")->readToEnd(5), "12345");
  EXPECT_EQ(start("printf 123456")->readToEnd(5), std::nullopt);
}

TEST_F(SpawnedTaskTest, StopsReadingAToolThatPrintsWithoutEnd) {
  const auto task = start("while :; do echo again and again; done");
  EXPECT_EQ(task->readToEnd(100'000), std::nullopt);
  EXPECT_TRUE(task->isRunning());
}

TEST_F(SpawnedTaskTest, TerminatesAToolThatHangsWithItsOutputOpen) {
  const auto task = start("echo begun\n" + sayReady() + "exec sleep 600");
  ASSERT_TRUE(eventually([&] { return isReady(); }));
  std::thread terminator([&] { task->terminate(); });
  const auto output = task->readToEnd(kAmple);
  terminator.join();
  EXPECT_TRUE(output.has_value());
  EXPECT_TRUE(eventually([&] { return !task->isRunning(); }));
}

TEST_F(SpawnedTaskTest, EndsAReadThatIsWaitingAlready) {
  const auto task = start("exec sleep 600");
  std::thread terminator([&] {
    // The reader's thread sleeps in the kernel once it waits; ending it any earlier works as well.
    std::this_thread::sleep_for(50ms);
    task->terminate();
  });
  EXPECT_EQ(task->readToEnd(kAmple), "");
  terminator.join();
}

TEST_F(SpawnedTaskTest, EndsTheReadOfAToolThatIgnoresTheRequest) {
  const auto task = start("trap '' TERM\n" + sayReady() + "exec sleep 600");
  ASSERT_TRUE(eventually([&] { return isReady(); }));
  task->terminate();
  EXPECT_EQ(task->readToEnd(kAmple), "");
  EXPECT_TRUE(task->isRunning());
}

TEST_F(SpawnedTaskTest, KnowsAToolThatGoesOnAfterItClosedItsOutput) {
  const auto task = start("echo done; exec >&-; exec sleep 600");
  EXPECT_EQ(task->readToEnd(kAmple), "done\n");
  EXPECT_TRUE(task->isRunning());
  task->terminate();
  EXPECT_TRUE(eventually([&] { return !task->isRunning(); }));
}

TEST_F(SpawnedTaskTest, MayBeTerminatedAgainAfterItHasEnded) {
  const auto task = start("true");
  task->readToEnd(kAmple);
  ASSERT_TRUE(eventually([&] { return !task->isRunning(); }));
  task->terminate();
  task->terminate();
  EXPECT_FALSE(task->isRunning());
}

TEST_F(SpawnedTaskTest, LeavesNoProcessAndNoDescriptorBehind) {
  const std::ptrdiff_t before = descriptorCount();
  start("true");
  start("exec sleep 600");
  start("echo read")->readToEnd(kAmple);
  EXPECT_FALSE(hasChild());
  EXPECT_EQ(descriptorCount(), before);
}

TEST_F(SpawnedTaskTest, KillsAToolThatIgnoresTheRequestWhenItIsDestroyed) {
  auto task = start("trap '' TERM\n" + sayReady() + "exec sleep 600");
  ASSERT_TRUE(eventually([&] { return isReady(); }));
  task.reset();
  EXPECT_FALSE(hasChild());
}

TEST_F(SpawnedTaskTest, ReapsOnlyItsOwnChild) {
  const auto other = start("exec sleep 600");
  start("true").reset();
  EXPECT_TRUE(other->isRunning());
}

}  // namespace
}  // namespace platform
