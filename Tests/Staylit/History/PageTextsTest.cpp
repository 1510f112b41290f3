#include "Staylit/History/PageTexts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "Staylit/History/HtmlText.h"
#include "Tests/Staylit/History/HistoryScript.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;

int weekNumber(int year, int month, int day) {
  ::setenv("TZ", "UTC0", 1);
  const std::chrono::sys_days date(std::chrono::year(year) / month / day);
  return CalendarWeek::of(LocalTime::of(date)).number;
}

TEST(PageTexts, CountWeeksAsTheCalendarDoes) {
  EXPECT_EQ(weekNumber(2026, 11, 22), 47);
  EXPECT_EQ(weekNumber(2026, 11, 23), 48);
  EXPECT_EQ(weekNumber(2026, 12, 31), 53);
  EXPECT_EQ(weekNumber(2027, 1, 3), 53);
  EXPECT_EQ(weekNumber(2027, 1, 4), 1);
  EXPECT_EQ(weekNumber(2024, 12, 30), 1);
}

TEST(PageTexts, GiveALengthInHoursAndMinutes) {
  EXPECT_EQ(lengthText(40s), "40\u00a0s");
  EXPECT_EQ(lengthText(60s), "1\u00a0min");
  EXPECT_EQ(lengthText(59min + 59s), "59\u00a0min");
  EXPECT_EQ(lengthText(7h), "7\u00a0h");
  EXPECT_EQ(lengthText(31h + 5min), "31\u00a0h\u00a05\u00a0min");
  EXPECT_EQ(lengthText(-5s), "0\u00a0s");
}

TEST(PageTexts, CallTheEndOfADayTwentyFour) {
  ::setenv("TZ", "UTC0", 1);
  HistoryTimeline::Span span{HistoryScript::at(60), HistoryScript::at(1'440)};
  EXPECT_EQ(spanText(span), "01:00 to 24:00");
  span.ending = HistoryTimeline::Ending::open;
  EXPECT_EQ(spanText(span), "01:00 to 24:00 and on");
  span.ending = HistoryTimeline::Ending::lost;
  EXPECT_EQ(spanText(span), "01:00 to 24:00 at least");
}

TEST(PageTexts, GivePartsInThousandths) {
  EXPECT_EQ(percentText(0), "0%");
  EXPECT_EQ(percentText(0.5), "50%");
  EXPECT_EQ(percentText(0.123456), "12.346%");
  EXPECT_EQ(percentText(0.0001), "0.01%");
  EXPECT_EQ(percentText(1), "100%");
  EXPECT_EQ(percentText(7), "100%");
}

TEST(HtmlText, EscapesWhatHasAMeaning) {
  EXPECT_EQ(htmlText("a<b>&\"'"), "a&lt;b&gt;&amp;&quot;&#39;");
}

TEST(HtmlText, ReplacesWhatTurnsOrBreaksALine) {
  EXPECT_EQ(htmlText("a\u202eb\nc\u2067\x01"), "a\ufffdb\ufffdc\ufffd\ufffd");
  EXPECT_EQ(htmlText("\xff"), "\ufffd");
}

TEST(HtmlText, KeepsADirectionOfWritingInside) {
  EXPECT_EQ(htmlName("אב"), "<bdi>אב</bdi>");
}

}  // namespace
}  // namespace staylit
