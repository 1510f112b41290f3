#include "Platform/Linux/Network/ProcSocketHolders.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using Search = SocketHolders::Search;

class ProcSocketHoldersTest : public ::testing::Test {
 protected:
  void writeStat(const std::string& pid, const std::string& name, const std::string& state) const {
    folder_.write(pid + "/stat", pid + " (" + name + ") " + state +
                                     " 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19876 20 21\n");
  }

  void link(const std::string& name, const std::string& target) const {
    const std::filesystem::path path = folder_.path(name);
    std::filesystem::create_directories(path.parent_path());
    std::filesystem::create_symlink(target, path);
  }

  testing::TemporaryFolder folder_;
};

std::vector<std::uint32_t> socketsOf(SocketHolders& holders, std::int32_t pid) {
  std::vector<std::uint32_t> inodes;
  holders.visitSockets(pid, [&](std::uint32_t inode) {
    inodes.push_back(inode);
    return true;
  });
  std::ranges::sort(inodes);
  return inodes;
}

TEST_F(ProcSocketHoldersTest, ListsTheNumbersAmongTheFolders) {
  for (const char* name : {"1", "42", "32768", "self", "4x", "-3", "99999999999"}) {
    std::filesystem::create_directories(folder_.path(name));
  }
  ProcSocketHolders holders(folder_.path());
  std::vector<std::int32_t> pids{7};
  holders.listPids(pids);
  std::ranges::sort(pids);
  EXPECT_EQ(pids, (std::vector<std::int32_t>{1, 42, 32768}));
}

TEST_F(ProcSocketHoldersTest, ListsTheProcessesAnewEachTime) {
  ProcSocketHolders holders(folder_.path());
  std::vector<std::int32_t> pids;
  std::filesystem::create_directories(folder_.path("5"));
  holders.listPids(pids);
  EXPECT_EQ(pids, (std::vector<std::int32_t>{5}));
  holders.listPids(pids);
  EXPECT_EQ(pids, (std::vector<std::int32_t>{5}));
}

TEST_F(ProcSocketHoldersTest, ReadsTheStartTimeAfterAnyName) {
  writeStat("42", "a ) (b", "S");
  EXPECT_EQ(ProcSocketHolders(folder_.path()).startTime(42), 19876U);
}

TEST_F(ProcSocketHoldersTest, CountsAZombieAsEnded) {
  writeStat("42", "gone", "Z");
  EXPECT_FALSE(ProcSocketHolders(folder_.path()).startTime(42));
}

TEST_F(ProcSocketHoldersTest, HasNoStartTimeForAProcessThatDoesNotExist) {
  folder_.write("42/stat", "rubbish");
  ProcSocketHolders holders(folder_.path());
  EXPECT_FALSE(holders.startTime(41));
  EXPECT_FALSE(holders.startTime(42));
}

TEST_F(ProcSocketHoldersTest, FindsTheSocketsAmongTheDescriptors) {
  link("42/fd/0", "/dev/null");
  link("42/fd/1", "socket:[123]");
  link("42/fd/2", "pipe:[5]");
  link("42/fd/10", "socket:[4294967295]");
  link("42/fd/11", "socket:[4294967296]");
  link("42/fd/12", "socket:[]");
  link("42/fd/13", "socket:[7x]");
  link("42/fd/14", "/tmp/socket:[9]");
  link("42/fd/15", "/a/path/that/is/longer/than/any/socket/has/ever/been");
  ProcSocketHolders holders(folder_.path());
  EXPECT_EQ(socketsOf(holders, 42), (std::vector<std::uint32_t>{123, 4294967295}));
}

TEST_F(ProcSocketHoldersTest, SaysHowASearchEnded) {
  link("42/fd/1", "socket:[123]");
  ProcSocketHolders holders(folder_.path());
  EXPECT_EQ(holders.visitSockets(42, [](std::uint32_t) { return true; }), Search::complete);
  EXPECT_EQ(holders.visitSockets(42, [](std::uint32_t) { return false; }), Search::stopped);
  EXPECT_EQ(holders.visitSockets(41, [](std::uint32_t) { return true; }), Search::refused);
}

TEST(ProcSocketHoldersLive, FindsItsOwnSocketAmongThousandDescriptors) {
  std::vector<Descriptor> others;
  for (int count = 0; count < 900; ++count) {
    others.emplace_back(dup(STDERR_FILENO));
  }
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  struct stat status {};
  ASSERT_EQ(fstat(socket.get(), &status), 0);
  ProcSocketHolders holders;
  const auto sockets = socketsOf(holders, getpid());
  EXPECT_TRUE(std::ranges::count(sockets, static_cast<std::uint32_t>(status.st_ino)) == 1);
}

TEST(ProcSocketHoldersLive, ListsItself) {
  ProcSocketHolders holders;
  std::vector<std::int32_t> pids;
  holders.listPids(pids);
  EXPECT_EQ(std::ranges::count(pids, getpid()), 1);
}

TEST(ProcSocketHoldersLive, SeesAProcessRun) {
  ProcSocketHolders holders;
  const auto before = holders.cpuTime(getpid());
  ASSERT_TRUE(before);
  const std::clock_t begin = std::clock();
  while (std::clock() == begin) {
  }
  EXPECT_GT(holders.cpuTime(getpid()), before);
}

TEST(ProcSocketHoldersLive, SeesASleepingProcessRest) {
  const pid_t child = fork();
  if (child == 0) {
    for (;;)
      pause();
  }
  ProcSocketHolders holders;
  // The child needs a moment to come to rest.
  auto before = holders.cpuTime(child);
  for (int quiet = 0; quiet < 20; ++quiet) {
    usleep(1000);
    const auto now = holders.cpuTime(child);
    if (now != before) quiet = 0;
    before = now;
  }
  EXPECT_TRUE(before);
  EXPECT_EQ(holders.cpuTime(child), before);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(holders.cpuTime(child), std::nullopt);
  EXPECT_FALSE(holders.startTime(child));
}

}  // namespace
}  // namespace platform
