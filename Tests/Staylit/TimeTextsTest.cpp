#include "Staylit/TimeTexts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <limits>

namespace staylit {
namespace {

using namespace std::chrono_literals;
using tidewell::Seconds;
using tidewell::WallTime;

/// Half a second after 09:31:04 UTC.
constexpr WallTime kMorning =
    std::chrono::sys_days(std::chrono::year(2026) / 11 / 22) + 9h + 31min + 4s + 500ms;

TEST(TimeTexts, TellTheTimeOfDayWhereTheComputerIs) {
  ASSERT_EQ(setenv("TZ", "EST5", 1), 0);
  EXPECT_EQ(timeOfDay(kMorning), "04:31:04");
  ASSERT_EQ(setenv("TZ", "UTC0", 1), 0);
  EXPECT_EQ(timeOfDay(kMorning), "09:31:04");
}

TEST(TimeTexts, TellTheWholeSecondInUniversalTime) {
  EXPECT_EQ(inUniversalTime(kMorning), "2026-11-22T09:31:04Z");
  EXPECT_EQ(inUniversalTime(WallTime()), "1970-01-01T00:00:00Z");
  EXPECT_EQ(inUniversalTime(WallTime(-1ns)), "1969-12-31T23:59:59Z");
}

TEST(TimeTexts, TellALengthInItsTwoLargestUnits) {
  EXPECT_EQ(lengthOfTime(0s), "0 s");
  EXPECT_EQ(lengthOfTime(Seconds(59.9)), "59 s");
  EXPECT_EQ(lengthOfTime(60s), "1 min 0 s");
  EXPECT_EQ(lengthOfTime(3'599s), "59 min 59 s");
  EXPECT_EQ(lengthOfTime(3'600s), "1 h 0 min");
  EXPECT_EQ(lengthOfTime(7'859s), "2 h 10 min");
  EXPECT_EQ(lengthOfTime(86'400s), "1 d 0 h");
  EXPECT_EQ(lengthOfTime(273'600s), "3 d 4 h");
}

TEST(TimeTexts, TellOfNoLengthThatCannotBe) {
  EXPECT_EQ(lengthOfTime(-5s), "0 s");
  EXPECT_EQ(lengthOfTime(Seconds(std::numeric_limits<double>::quiet_NaN())), "0 s");
  EXPECT_EQ(lengthOfTime(Seconds(std::numeric_limits<double>::infinity())), "11574074074 d 1 h");
}

}  // namespace
}  // namespace staylit
