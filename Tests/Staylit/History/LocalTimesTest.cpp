#include "Staylit/History/LocalTimes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "Staylit/TimeTexts.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;

void useZone(const char* zone) {
  ASSERT_EQ(setenv("TZ", zone, 1), 0);
  tzset();
}

tidewell::WallTime utc(int month, int day, std::chrono::minutes time) {
  return std::chrono::sys_days(std::chrono::year(2026) / month / day) + time;
}

class LocalTimesTest : public testing::Test {
 protected:
  // Central Europe, by its rule.
  void SetUp() override { useZone("CET-1CEST,M3.5.0,M10.5.0/3"); }
  void TearDown() override { useZone("UTC0"); }

  /// By a clock that says Sunday, 22 November 2026, 15:45.
  static std::string meant(std::string_view text, bool meansEnd = false) {
    const auto time = timeMeant(text, utc(11, 22, 14h + 45min), meansEnd);
    return time ? inUniversalTime(*time) : "nothing";
  }
};

TEST_F(LocalTimesTest, ADayBeginsAtLocalMidnight) {
  const LocalDay day = localDayOf(utc(11, 22, 23h + 30min));
  EXPECT_EQ(day.from, utc(11, 22, 23h));
  EXPECT_EQ(day.to, utc(11, 23, 23h));
}

TEST_F(LocalTimesTest, ADayHas23Or25HoursWhereTheClocksAreChanged) {
  EXPECT_EQ(localDayOf(utc(3, 29, 10h)).to - localDayOf(utc(3, 29, 10h)).from, 23h);
  EXPECT_EQ(localDayOf(utc(10, 25, 10h)).to - localDayOf(utc(10, 25, 10h)).from, 25h);
}

TEST_F(LocalTimesTest, ADayBeginsAtOneWhereTheClocksAreChangedAtMidnight) {
  useZone("<-04>4<-03>,M9.1.6/24,M4.1.6/24");  // Chile: 6 September 2026 begins at 01:00.
  const LocalDay day = localDayOf(utc(9, 6, 15h));
  EXPECT_EQ(day.from, utc(9, 6, 4h));
  EXPECT_EQ(day.to, utc(9, 7, 3h));
  EXPECT_EQ(localDayOf(utc(9, 5, 15h)).to, utc(9, 6, 4h));
}

TEST_F(LocalTimesTest, DaysFollowEachOtherAcrossAChangeOfTheClocks) {
  const auto days = localDaysBetween(utc(10, 24, 10h), utc(10, 26, 10h));
  ASSERT_EQ(days.size(), 3U);
  EXPECT_EQ(days[0].to, days[1].from);
  EXPECT_EQ(days[1].to, days[2].from);
  EXPECT_EQ(days[1].from, utc(10, 24, 22h));
  EXPECT_EQ(days[1].to, utc(10, 25, 23h));
}

TEST_F(LocalTimesTest, ADayThatOnlyBeginsWhereTheRangeEndsIsNotInIt) {
  EXPECT_EQ(localDaysBetween(utc(11, 21, 23h), utc(11, 22, 23h)).size(), 1U);
}

TEST_F(LocalTimesTest, WritesTimesForPeople) {
  EXPECT_EQ(hourAndMinute(utc(11, 22, 8h + 5min)), "09:05");
  EXPECT_EQ(localDate(utc(11, 22, 23h + 5min)), "2026-11-23");
  EXPECT_EQ(longLocalDate(utc(11, 22, 23h + 5min)), "Monday, 23 November 2026");
}

TEST_F(LocalTimesTest, UnderstandsDays) {
  EXPECT_EQ(meant("today"), "2026-11-21T23:00:00Z");
  EXPECT_EQ(meant("yesterday"), "2026-11-20T23:00:00Z");
  EXPECT_EQ(meant("2026-03-29"), "2026-03-28T23:00:00Z");
}

TEST_F(LocalTimesTest, TakesADayAsAnEndForItsEnd) {
  EXPECT_EQ(meant("today", true), "2026-11-22T23:00:00Z");
  EXPECT_EQ(meant("yesterday", true), "2026-11-21T23:00:00Z");
  EXPECT_EQ(meant("2026-03-29", true), "2026-03-29T22:00:00Z");
  EXPECT_EQ(meant("14:30", true), "2026-11-22T13:30:00Z");
}

TEST_F(LocalTimesTest, UnderstandsTimes) {
  EXPECT_EQ(meant("14:30"), "2026-11-22T13:30:00Z");
  EXPECT_EQ(meant("2026-07-01 00:05"), "2026-06-30T22:05:00Z");
  EXPECT_EQ(meant("2026-07-01T23:59"), "2026-07-01T21:59:00Z");
  EXPECT_EQ(meant("now"), "2026-11-22T14:45:00Z");
}

TEST_F(LocalTimesTest, UnderstandsHowLongAgo) {
  EXPECT_EQ(meant("7d"), "2026-11-15T14:45:00Z");
  EXPECT_EQ(meant("12h"), "2026-11-22T02:45:00Z");
  EXPECT_EQ(meant("30m"), "2026-11-22T14:15:00Z");
}

TEST_F(LocalTimesTest, UnderstandsNothingElse) {
  for (const char* text : {"",
                           "tomorrow",
                           "2026-02-30",
                           "2026-13-01",
                           "2026-1-1",
                           "26-01-01",
                           "24:00",
                           "14:60",
                           "4:30",
                           "14:30:00",
                           "2026-11-21 ",
                           "2026-11-21 25:00",
                           "2026-11-21x14:30",
                           "d",
                           "-3d",
                           "3 d",
                           "3w",
                           "1000000h",
                           "3.5h",
                           "1969-01-01",
                           " today"}) {
    EXPECT_EQ(meant(text), "nothing") << text;
  }
}

}  // namespace
}  // namespace staylit
