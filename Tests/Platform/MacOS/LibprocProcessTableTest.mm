// What this kernel does and no other.

#include "Platform/MacOS/Processes/LibprocProcessTable.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include "Tests/Platform/Support/PausedChild.h"

namespace platform {
namespace {

TEST(LibprocProcessTableTest, KnowsWhoIsChargedTwiceForItsChildren) {
  LibprocProcessTable table{[] { return KernelSnapshot::Applications(); }};
  EXPECT_FALSE(table.isChargedTwice(getpid()));
  tidewell::ResourceUsage before;
  ASSERT_TRUE(table.resourceUsage(getpid(), before));
  struct sigaction former {};
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  ASSERT_EQ(sigaction(SIGCHLD, &ignore, &former), 0);
  EXPECT_TRUE(table.isChargedTwice(getpid()));
  const pid_t child = fork();
  if (child == 0) {
    testing::burn(0.3);
    _exit(0);
  }
  while (kill(child, 0) == 0) usleep(10'000);
  sigaction(SIGCHLD, &former, nullptr);
  tidewell::ResourceUsage after;
  ASSERT_TRUE(table.resourceUsage(getpid(), after));
  const tidewell::Timebase timebase = table.timebase();
  const double charged = static_cast<double>(after.reapedTime - before.reapedTime) *
                         static_cast<double>(timebase.numer) / static_cast<double>(timebase.denom) /
                         1e9;
  EXPECT_NEAR(charged, 0.6, 0.15) << "twice what it used";
  EXPECT_FALSE(table.isChargedTwice(getpid()));
}

}  // namespace
}  // namespace platform
