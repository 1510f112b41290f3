#include "Tidewell/Thresholds.h"

#include <gtest/gtest.h>

namespace tidewell {
namespace {

TEST(ActivityThresholds, TakesItsSixFieldsInOrder) {
  const ActivityThresholds thresholds(15.0, 500.0, 100.0, 10, {"com.a", "tool"}, true);
  EXPECT_EQ(thresholds.cpuPercent, 15.0);
  EXPECT_EQ(thresholds.diskKBps, 500.0);
  EXPECT_EQ(thresholds.netKBps, 100.0);
  EXPECT_EQ(thresholds.sustainSeconds, 10);
  EXPECT_EQ(thresholds.ignored, (TextSet{"com.a", "tool"}));
  EXPECT_TRUE(thresholds.honorAppAssertions);
}

TEST(ActivityThresholds, ExcludesNothingWithAnEmptyIgnoredSet) {
  const ActivityThresholds thresholds(15.0, 500.0, 100.0, 10, {}, true);
  EXPECT_FALSE(thresholds.ignored.contains("com.a"));
  EXPECT_FALSE(thresholds.ignored.contains(""));
}

TEST(ActivityThresholds, CanBeChangedFieldByField) {
  ActivityThresholds thresholds(15.0, 500.0, 100.0, 10, {}, true);
  thresholds.cpuPercent = 1.5;
  thresholds.ignored.insert("com.a");
  thresholds.honorAppAssertions = false;
  EXPECT_EQ(thresholds.cpuPercent, 1.5);
  EXPECT_TRUE(thresholds.ignored.contains("com.a"));
  EXPECT_FALSE(thresholds.honorAppAssertions);
}

}  // namespace
}  // namespace tidewell
