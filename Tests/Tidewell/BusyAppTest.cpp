#include "Tidewell/BusyApp.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace tidewell {
namespace {

std::string reason(double cpuPercent, double diskKBps, double netKBps) {
  return BusyApp{"id", "Name", AppCategory::other, cpuPercent, diskKBps, netKBps, 0}.reason();
}

TEST(BusyApp, IsActiveWithAllRatesBelowOne) {
  EXPECT_EQ(reason(0.99, 0.99, 0.99), "active");
  EXPECT_EQ(reason(0, 0, 0), "active");
}

TEST(BusyApp, ShowsARateOfExactlyOne) {
  EXPECT_EQ(reason(1.0, 0, 0), "1% CPU");
  EXPECT_EQ(reason(0, 1.0, 0), "1 KB/s disk");
  EXPECT_EQ(reason(0, 0, 1.0), "1 KB/s net");
}

TEST(BusyApp, LeavesOutARateOf099ThoughItWouldPrintAsOne) {
  EXPECT_EQ(reason(12, 0.99, 0), "12% CPU");
}

TEST(BusyApp, ShowsCPUAboveAHundredPercentAsItIs) {
  EXPECT_EQ(reason(250, 0, 0), "250% CPU");
}

TEST(BusyApp, ShowsDiskAlone) {
  EXPECT_EQ(reason(0, 5, 0), "5 KB/s disk");
}

TEST(BusyApp, JoinsCPUAndNetworkWithoutAnEmptyPartBetween) {
  EXPECT_EQ(reason(12, 0, 40), "12% CPU \u00B7 40 KB/s net");
  EXPECT_EQ(reason(112, 0, 2048), "112% CPU \u00B7 2048 KB/s net");
}

TEST(BusyApp, JoinsAllThreeInTheOrderCPUDiskNetwork) {
  EXPECT_EQ(reason(3, 2, 1), "3% CPU \u00B7 2 KB/s disk \u00B7 1 KB/s net");
}

TEST(BusyApp, RoundsToTheNearestWholeNumber) {
  EXPECT_EQ(reason(37.4, 0, 0), "37% CPU");
  EXPECT_EQ(reason(37.6, 0, 0), "38% CPU");
  EXPECT_EQ(reason(1.5, 0, 0), "2% CPU");
  EXPECT_EQ(reason(2.5, 0, 0), "2% CPU") << "printf rounds a half to even";
}

TEST(BusyApp, ShowsTheLargestRateInFull) {
  const std::string text = reason(std::numeric_limits<double>::max(), 0, 0);
  EXPECT_EQ(text.size(), std::string("% CPU").size() + 309);
  EXPECT_TRUE(text.starts_with("179769313486231570814527423731704356798"));
  EXPECT_TRUE(text.ends_with("% CPU"));
}

TEST(BusyApp, EqualsAnotherWithTheSameIdWhateverElseDiffers) {
  const BusyApp left{"com.a", "A", AppCategory::downloads, 1, 2, 3, 4};
  const BusyApp right{"com.a", "Another", AppCategory::other, 50, 60, 70, 80};
  EXPECT_EQ(left, right);
}

TEST(BusyApp, DiffersFromAnotherIdWithTheSameRates) {
  const BusyApp left{"com.a", "A", AppCategory::downloads, 1, 2, 3, 4};
  const BusyApp right{"com.b", "A", AppCategory::downloads, 1, 2, 3, 4};
  EXPECT_NE(left, right);
  const BusyApp capital{"com.A", "A", AppCategory::downloads, 1, 2, 3, 4};
  EXPECT_NE(left, capital);
}

}  // namespace
}  // namespace tidewell
