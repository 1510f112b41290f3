// Tells under which account a process is counted, and for how long this is known.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Fakes/FakeRunningApplications.h"
#include "Tests/Tidewell/Accounting/ConservedTable.h"

namespace tidewell {
namespace {

using KnownAccountsTest = ConservedTable;

TEST_F(KnownAccountsTest, ForgetsTheAccountOfAProcessThatEndedLongAgo) {
  kernel.givesNumbersAgain = false;
  const auto job = kernel.spawn(1, "/bin/job");
  pass();
  kernel.endAndReap(job);
  pass();
  std::vector<std::int32_t> others;
  for (std::size_t number = 0; number < AccountDirectory::kMostEnded; ++number)
    others.push_back(kernel.spawn(1, "/bin/other"));
  pass();
  ASSERT_TRUE(accounts.accountOf(job));
  for (const std::int32_t other : others)
    kernel.endAndReap(other);
  pass();
  EXPECT_FALSE(accounts.accountOf(job));
  EXPECT_TRUE(accounts.accountOf(others.front()));
}

TEST_F(KnownAccountsTest, NeverForgetsALivingProcessThatGotItsNumberOnTheSamePass) {
  const auto job = kernel.spawn(1, "/bin/job");
  pass();
  kernel.endAndReap(job);
  ASSERT_EQ(kernel.spawn(1, "/bin/daemon"), job);
  pass();
  kernel.givesNumbersAgain = false;
  kernel.latest = 100;
  std::vector<std::int32_t> others;
  for (std::size_t number = 0; number <= AccountDirectory::kMostEnded; ++number)
    others.push_back(kernel.spawn(1, "/bin/other"));
  pass();
  for (const std::int32_t other : others)
    kernel.endAndReap(other);
  pass();
  ASSERT_FALSE(accounts.accountOf(others.front())) << "enough have ended";
  EXPECT_TRUE(accounts.accountOf(job));
}

TEST_F(KnownAccountsTest, AProcessThatLosesItsOnlyNameIsNotCountedAnyMore) {
  const auto job = kernel.spawn(1, "");
  const auto properties = std::make_shared<int>(0);
  kernel.applications.push_back(
      std::make_shared<FakeRunningApplication>(job, std::nullopt, "Job", properties));
  kernel.work(job, 5, 50);
  pass();
  EXPECT_EQ(total, (Usage{5, 50}));
  kernel.applications.clear();
  kernel.work(job, 2, 20);
  pass();
  ResourceUsage usage;
  EXPECT_FALSE(table.resourceUsage(job, usage));
  pass();
  EXPECT_FALSE(table.resourceUsage(job, usage));
  EXPECT_EQ(total, (Usage{5, 50})) << "what was counted under that name stays";
}

}  // namespace
}  // namespace tidewell
