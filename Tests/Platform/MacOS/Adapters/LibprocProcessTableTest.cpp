#include "Platform/MacOS/Processes/LibprocProcessTable.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <span>

#include "Tests/Platform/Processes/ProcessTableContract.h"

namespace platform {
namespace {

struct LibprocTable {
  LibprocProcessTable table{[] { return KernelSnapshot::Applications(); }};
};

INSTANTIATE_TYPED_TEST_SUITE_P(OfLibproc, ProcessTableContract, LibprocTable);

TEST(LibprocProcessTable, FillsNoMoreThanThereIsRoomFor) {
  std::array<std::int32_t, 3> buffer{0, 0, -7};
  EXPECT_EQ(LibprocProcessTable::listPids(std::span(buffer).first(2)), 8);
  EXPECT_EQ(buffer[2], -7);
}

TEST(LibprocProcessTable, TellsOfAProcessThatWaitsToBeReapedAllButItsPath) {
  LibprocTable owner;
  const testing::PausedChild child([] {});
  tidewell::ResourceUsage before;
  ASSERT_TRUE(owner.table.resourceUsage(child.pid(), before));
  child.killWithoutReaping();
  tidewell::ResourceUsage usage;
  ASSERT_TRUE(owner.table.resourceUsage(child.pid(), usage));
  EXPECT_EQ(usage.startTime, before.startTime);
  EXPECT_GE(usage.userTime + usage.systemTime, before.userTime + before.systemTime);
  EXPECT_EQ(owner.table.parent(child.pid()), getpid());
  EXPECT_EQ(owner.table.path(child.pid()), "");
}

TEST(LibprocProcessTable, KnowsWhoIgnoresTheEndOfItsChildren) {
  LibprocTable owner;
  const testing::PausedChild ordinary([] {});
  const testing::PausedChild careless([] { std::signal(SIGCHLD, SIG_IGN); });
  EXPECT_FALSE(owner.table.isChargedTwice(ordinary.pid()));
  EXPECT_TRUE(owner.table.isChargedTwice(careless.pid()));
  EXPECT_FALSE(owner.table.isChargedTwice(-5));
}

}  // namespace
}  // namespace platform
