// Usage that is told all at once is cut to what can have been used since the last pass.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>

#include "Tests/Tidewell/Accounting/ConservedTable.h"

namespace tidewell {
namespace {

/// In two seconds, and with the margin of a quarter, two processors can give 5 s, and the fastest
/// drive can carry 40 GB.
constexpr std::uint64_t kMostSeconds = 5;
constexpr std::uint64_t kMostBytes = 40'000'000'000;
constexpr std::uint64_t kDayOldBytes = 900'000'000'000;

class UsageCeilingTest : public ConservedTable {
 protected:
  UsageCeilingTest() : ConservedTable(2) {}

  /// What of this a process has on the first pass on which it may be read.
  Usage firstReading(const Usage& usage) {
    const auto job = kernel.spawn(1, "/bin/job");
    kernel.processes.at(job).hidden = true;
    kernel.work(job, usage.time, usage.disk);
    pass();
    kernel.processes.at(job).hidden = false;
    pass();
    return used("job");
  }
};

class ReapedUsageCeilingTest : public UsageCeilingTest, public testing::WithParamInterface<bool> {
 protected:
  ReapedUsageCeilingTest() { kernel.addsReapedDisk = GetParam(); }
};

TEST_P(ReapedUsageCeilingTest, BytesOfAHiddenChildAreCutToWhatADriveCanCarry) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/usr/bin/secret");
  kernel.processes.at(job).hidden = true;
  pass();
  kernel.work(job, 4, kDayOldBytes);
  kernel.endAndReap(job);
  pass();
  const std::uint64_t expected = kernel.addsReapedDisk ? kMostBytes : 0;
  EXPECT_EQ(used("sh"), (Usage{4, expected}));
  pass();
  pass();
  EXPECT_EQ(used("sh"), (Usage{4, expected})) << "the rest is not told later";
}

TEST_P(ReapedUsageCeilingTest, ASeenChildThatIsReapedAfterDaysIsNoJump) {
  const auto shell = kernel.spawn(1, "/bin/sh");
  const auto job = kernel.spawn(shell, "/bin/job");
  kernel.work(job, 80'000, kDayOldBytes);
  pass();
  kernel.endAndReap(job);
  pass();
  EXPECT_EQ(used("job"), (Usage{80'000, kDayOldBytes}));
  EXPECT_EQ(used("sh"), Usage());
}

TEST_F(UsageCeilingTest, AFirstReadingIsCutToWhatTheProcessCanHaveUsed) {
  const auto job = kernel.spawn(1, "/bin/job");
  kernel.processes.at(job).hidden = true;
  kernel.work(job, 80'000, kDayOldBytes);
  pass();
  kernel.processes.at(job).hidden = false;
  pass();
  EXPECT_EQ(used("job"), (Usage{kMostSeconds, kMostBytes}));
  kernel.work(job, 1, 10);
  pass();
  EXPECT_EQ(used("job"), (Usage{kMostSeconds + 1, kMostBytes + 10}));
}

TEST_F(UsageCeilingTest, AFirstReadingBelowTheCeilingIsNotCut) {
  EXPECT_EQ(firstReading({kMostSeconds - 1, kMostBytes - 1}),
            (Usage{kMostSeconds - 1, kMostBytes - 1}));
}

TEST_F(UsageCeilingTest, AFirstReadingAtTheCeilingIsNotCut) {
  EXPECT_EQ(firstReading({kMostSeconds, kMostBytes}), (Usage{kMostSeconds, kMostBytes}));
}

TEST_F(UsageCeilingTest, AFirstReadingAboveTheCeilingIsCut) {
  EXPECT_EQ(firstReading({kMostSeconds + 1, kMostBytes + 1}), (Usage{kMostSeconds, kMostBytes}));
}

TEST_F(UsageCeilingTest, TheUsageThatAProcessIsSeenToAddIsNotCut) {
  const auto job = kernel.spawn(1, "/bin/job");
  pass();
  kernel.work(job, 100, kDayOldBytes);
  pass();
  EXPECT_EQ(used("job"), (Usage{100, kDayOldBytes}));
}

TEST_F(UsageCeilingTest, MoreCanHaveBeenUsedInALongerInterval) {
  const auto job = kernel.spawn(1, "/bin/job");
  kernel.processes.at(job).hidden = true;
  kernel.work(job, 80'000, kDayOldBytes);
  pass();
  clock.advance(std::chrono::seconds(18));
  kernel.processes.at(job).hidden = false;
  pass();
  EXPECT_EQ(used("job"), (Usage{10 * kMostSeconds, 10 * kMostBytes}));
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutReapedDisk, ReapedUsageCeilingTest, testing::Bool());

}  // namespace
}  // namespace tidewell
