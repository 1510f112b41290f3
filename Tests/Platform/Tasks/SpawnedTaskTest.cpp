#include "Platform/Posix/Tasks/SpawnedTask.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>

#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"
#include "Tests/Platform/Tasks/TaskContract.h"

namespace platform {
namespace {

constexpr std::size_t kAmple = kAmpleOutput;

std::ptrdiff_t descriptorCount() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::distance(begin(descriptors), end(descriptors));
}

bool hasChild() {
  return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD;
}

using SpawnedTaskTest = ScriptTest<SpawnedTaskLauncher>;

INSTANTIATE_TYPED_TEST_SUITE_P(Spawned, TaskContract, SpawnedTaskLauncher);

TEST_F(SpawnedTaskTest, SaysInTheSystemsWordsWhyAToolCannotBeLaunched) {
  EXPECT_EQ(launcher_.launch(folder_.path("missing"), {}).error, "No such file or directory");
  EXPECT_EQ(launcher_.launch(folder_.write("plain", "#!/bin/sh\n"), {}).error, "Permission denied");
}

TEST_F(SpawnedTaskTest, GivesNoTaskWhenTheLaunchFails) {
  EXPECT_EQ(launcher_.launch(folder_.path("missing"), {}).task, nullptr);
  EXPECT_FALSE(hasChild());
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
