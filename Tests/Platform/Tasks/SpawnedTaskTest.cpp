#include "Platform/Posix/Tasks/SpawnedTask.h"

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <string>

#include "Platform/Posix/Files/Pipe.h"
#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"
#include "Tests/Platform/Support/PlainErrorWords.h"
#include "Tests/Platform/Tasks/TaskContract.h"

namespace platform {
namespace {

struct PlainLauncher : SpawnedTaskLauncher {
  PlainLauncher() : SpawnedTaskLauncher(testing::plainErrorWords) {}
};

INSTANTIATE_TYPED_TEST_SUITE_P(Spawned, TaskContract, PlainLauncher);

/// Another process that traces the process with this number. Until the tracer has seen the end of
/// that process, its parent cannot reap it. The tracer ends within a minute in any case.
class Follower {
 public:
  explicit Follower(pid_t followed) {
    const Pipe answer = Pipe::make();
    process_ = fork();
    if (process_ == 0) {
      alarm(60);
      const bool follows = ptrace(PTRACE_SEIZE, followed, nullptr, nullptr) == 0;
      if (write(answer.writing.get(), &follows, sizeof follows) == sizeof follows) pause();
      _exit(0);
    }
    if (read(answer.reading.get(), &follows_, sizeof follows_) < 0) follows_ = false;
  }
  ~Follower() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  Follower(const Follower&) = delete;
  Follower& operator=(const Follower&) = delete;

  [[nodiscard]] bool follows() const { return follows_; }
  [[nodiscard]] bool isThere() const { return waitpid(process_, nullptr, WNOHANG) == 0; }

 private:
  pid_t process_ = -1;
  bool follows_ = false;
};

using SpawnedTaskTest = ScriptTest<PlainLauncher>;

TEST_F(SpawnedTaskTest, SaysInTheGivenWordsWhyAToolCannotBeLaunched) {
  const std::string missing = folder_.path("missing");
  EXPECT_EQ(launcher_.launch(missing, {}).error, "No such file or directory");
  EXPECT_EQ(launcher_.launch(folder_.write("plain", "#!/bin/sh\n"), {}).error, "Permission denied");
  SpawnedTaskLauncher other([](int error) { return "error " + std::to_string(error); });
  EXPECT_EQ(other.launch(missing, {}).error, "error " + std::to_string(ENOENT));
}

TEST_F(SpawnedTaskTest, DoesNotWaitForAToolThatCannotEndAndReapsItLater) {
  auto task = start("echo $$ > '" + folder_.path("number") + "'\n" + sayReady() + "exec sleep 600");
  ASSERT_TRUE(eventually([&] { return isReady(); }));
  pid_t tool = 0;
  std::ifstream(folder_.path("number")) >> tool;
  {
    const Follower follower(tool);
    if (!follower.follows()) GTEST_SKIP() << "no process may follow another here";
    task.reset();
    EXPECT_TRUE(follower.isThere()) << "its end was waited for";
    EXPECT_EQ(kill(tool, 0), 0) << "the tool was not kept";
  }
  EXPECT_TRUE(eventually([&] { return !hasChild(); }));
}

}  // namespace
}  // namespace platform
