#include "Staylit/PauseTexts.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

namespace staylit {
namespace {

using namespace std::chrono_literals;
using tidewell::Seconds;

TEST(PauseTexts, ReadLengthsWithUnits) {
  EXPECT_EQ(pauseLengthIn("45m"), Seconds(2'700));
  EXPECT_EQ(pauseLengthIn("45min"), Seconds(2'700));
  EXPECT_EQ(pauseLengthIn("2h"), Seconds(7'200));
  EXPECT_EQ(pauseLengthIn("1h30m"), Seconds(5'400));
  EXPECT_EQ(pauseLengthIn("1d"), Seconds(86'400));
  EXPECT_EQ(pauseLengthIn("90s"), Seconds(90));
}

TEST(PauseTexts, TakeNothingElseForALength) {
  for (const char* text : {"", "h", "2", "2 h", "-2h", "+2h", "2H", "2.5h", "2hours", "0s", "0h0m",
                           "367d", "99999999999h", "2147483647d2147483647d", "tomorrow"}) {
    EXPECT_EQ(pauseLengthIn(text), std::nullopt) << text;
  }
}

TEST(PauseTexts, TellWhenAPauseEnds) {
  const auto nine = std::chrono::sys_days(std::chrono::year(2024) / 5 / 17) + 9h;
  const std::string end = describePause(nine + 2h, nine);
  EXPECT_TRUE(end.starts_with("Paused until ")) << end;
  EXPECT_EQ(end.size(), std::string("Paused until 14:30").size()) << end;
  const std::string longer = describePause(nine + 49h, nine);
  EXPECT_TRUE(longer.starts_with("Paused for 2 d 1 h, until ")) << longer;
  EXPECT_TRUE(describePause(nine + 72h, nine + 1s).starts_with("Paused for 3 d 0 h, until "))
      << "the answer takes a moment";
  EXPECT_EQ(longer.size(), std::string("Paused for 2 d 1 h, until 2024-05-19 10:00").size());
  const std::string shorter = describePause(nine + 10s, nine);
  EXPECT_EQ(shorter.size(), std::string("Paused until 09:00:10").size()) << shorter;
  EXPECT_EQ(describePause(std::nullopt, nine), "Paused");
}

}  // namespace
}  // namespace staylit
