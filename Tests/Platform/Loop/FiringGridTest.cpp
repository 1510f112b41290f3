#include "Platform/Linux/Loop/EventTimer.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(FiringGrid, GoesOneIntervalOn) {
  EXPECT_EQ(nextFiring(10'000, 2'000, 10'000), 12'000U);
}

TEST(FiringGrid, DoesNotDriftWhenAFiringIsLate) {
  EXPECT_EQ(nextFiring(10'000, 2'000, 10'700), 12'000U);
}

TEST(FiringGrid, LeavesOutTheFiringsThatWereMissed) {
  EXPECT_EQ(nextFiring(10'000, 2'000, 17'500), 18'000U);
}

TEST(FiringGrid, IsAlwaysInTheFuture) {
  EXPECT_EQ(nextFiring(10'000, 2'000, 11'999), 12'000U);
  EXPECT_EQ(nextFiring(10'000, 2'000, 12'000), 14'000U);
  EXPECT_EQ(nextFiring(10'000, 2'000, 12'001), 14'000U);
}

}  // namespace
}  // namespace platform
