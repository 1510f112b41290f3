#include "Platform/Posix/Tasks/SpawnedTask.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"
#include "Tests/Platform/Support/PlainErrorWords.h"
#include "Tests/Platform/Tasks/TaskContract.h"

namespace platform {
namespace {

struct PlainLauncher : SpawnedTaskLauncher {
  PlainLauncher() : SpawnedTaskLauncher(testing::plainErrorWords) {}
};

INSTANTIATE_TYPED_TEST_SUITE_P(Spawned, TaskContract, PlainLauncher);

using SpawnedTaskTest = ScriptTest<PlainLauncher>;

TEST_F(SpawnedTaskTest, SaysInItsMakersWordsWhyAToolCannotBeLaunched) {
  const std::string missing = folder_.path("missing");
  EXPECT_EQ(launcher_.launch(missing, {}).error, "No such file or directory");
  EXPECT_EQ(launcher_.launch(folder_.write("plain", "#!/bin/sh\n"), {}).error, "Permission denied");
  SpawnedTaskLauncher other([](int error) { return "error " + std::to_string(error); });
  EXPECT_EQ(other.launch(missing, {}).error, "error " + std::to_string(ENOENT));
}

}  // namespace
}  // namespace platform
