// Usage that is told all at once is cut to what can have been used since the last pass.

#include <gtest/gtest.h>

#include <string>

#include "Tests/Tidewell/Accounting/ConservedTable.h"

namespace tidewell {
namespace {

/// In two seconds, and with the margin of a quarter, two processors can give 5 s, and the fastest
/// drive can carry 40 GB.
constexpr std::uint64_t kMostTime = 5;
constexpr std::uint64_t kMostBytes = 40'000'000'000;
constexpr std::uint64_t kDayOldBytes = 900'000'000'000;

class UsageCeilingTest : public ConservedTable, public testing::WithParamInterface<bool> {
 protected:
  UsageCeilingTest() : ConservedTable(2) { kernel.addsReapedDisk = GetParam(); }
};

TEST_P(UsageCeilingTest, BytesOfAHiddenChildAreCutToWhatADriveCanCarry) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/usr/bin/secret");
  kernel.processes.at(job).hidden = true;
  pass();
  kernel.work(job, 4, kDayOldBytes);
  kernel.endAndReap(job);
  pass();
  const std::uint64_t expected = kernel.addsReapedDisk ? kMostBytes : 0;
  EXPECT_EQ(counted["sh"], (Usage{4, expected}));
  pass();
  pass();
  EXPECT_EQ(counted["sh"], (Usage{4, expected})) << "the rest is not told later";
}

TEST_P(UsageCeilingTest, ASeenChildThatIsReapedAfterDaysIsNoJump) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 80'000, kDayOldBytes);
  pass();
  kernel.endAndReap(job);
  pass();
  EXPECT_EQ(counted["job"], (Usage{80'000, kDayOldBytes}));
  EXPECT_EQ(counted["sh"], Usage());
}

TEST_P(UsageCeilingTest, AFirstReadingIsCutToWhatTheProcessCanHaveUsed) {
  const auto job = kernel.spawn(1, "/bin/job");
  kernel.processes.at(job).hidden = true;
  kernel.work(job, 80'000, kDayOldBytes);
  pass();
  kernel.processes.at(job).hidden = false;
  pass();
  EXPECT_EQ(counted["job"], (Usage{kMostTime, kMostBytes}));
  kernel.work(job, 1, 10);
  pass();
  EXPECT_EQ(counted["job"], (Usage{kMostTime + 1, kMostBytes + 10}));
}

TEST_P(UsageCeilingTest, TheUsageThatAProcessIsSeenToAddIsNotCut) {
  const auto job = kernel.spawn(1, "/bin/job");
  pass();
  kernel.work(job, 100, kDayOldBytes);
  pass();
  EXPECT_EQ(counted["job"], (Usage{100, kDayOldBytes}));
}

TEST_P(UsageCeilingTest, MoreCanHaveBeenUsedInALongerInterval) {
  const auto job = kernel.spawn(1, "/bin/job");
  kernel.processes.at(job).hidden = true;
  kernel.work(job, 80'000, kDayOldBytes);
  pass();
  clock.advance(std::chrono::seconds(18));
  kernel.processes.at(job).hidden = false;
  pass();
  EXPECT_EQ(counted["job"], (Usage{10 * kMostTime, 10 * kMostBytes}));
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutReapedDisk, UsageCeilingTest, testing::Bool());

}  // namespace
}  // namespace tidewell
