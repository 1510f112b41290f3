#include "Platform/Linux/Tasks/LinuxProcessInfo.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <filesystem>
#include <string>
#include <thread>

#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

TEST(LinuxProcessInfo, NamesTheProcessAsItsToolsDo) {
  EXPECT_EQ(LinuxProcessInfo().processName(), "platform-tasks-");
}

TEST(LinuxProcessInfo, NamesTheProcessNotTheThread) {
  std::string name;
  std::thread([&name] {
    ::pthread_setname_np(::pthread_self(), "worker");
    name = LinuxProcessInfo().processName();
  }).join();
  EXPECT_EQ(name, "platform-tasks-");
}

TEST(OwnProgram, IsTheFileThatRuns) {
  EXPECT_EQ(ownProgram().filename(), "platform-tasks-tests");
  EXPECT_TRUE(std::filesystem::exists(ownProgram()));
}

TEST(OwnProgram, HasTheNameThatItHadBeforeItWasReplaced) {
  EXPECT_EQ(programOfLink("/opt/staylit (deleted)"), "/opt/staylit");
  EXPECT_EQ(programOfLink("/opt/staylit"), "/opt/staylit");
}

TEST(OwnProgram, MayBeCalledDeleted) {
  const testing::TemporaryFolder folder;
  folder.write("staylit (deleted)", "");
  const auto path = folder.path() / "staylit (deleted)";
  EXPECT_EQ(programOfLink(path.native()), path);
}

}  // namespace
}  // namespace platform
