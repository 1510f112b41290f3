#include "Tidewell/TextReading.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace tidewell {
namespace {

TEST(TextReading, ReadsAWholeNumberThatIsAllOfTheText) {
  EXPECT_EQ(wholeNumber<std::int32_t>("42"), 42);
  EXPECT_EQ(wholeNumber<std::int32_t>("-42"), -42);
  EXPECT_EQ(wholeNumber<std::uint64_t>("18446744073709551615"), 18446744073709551615U);
}

TEST(TextReading, ReadsNoNumberThatStandsBesideOtherText) {
  for (const std::string_view text : {"", " 42", "42 ", "4.2", "+42", "0x2a", "self", "-"}) {
    EXPECT_EQ(wholeNumber<std::int32_t>(text), std::nullopt) << text;
  }
  EXPECT_EQ(wholeNumber<std::uint32_t>("-1"), std::nullopt);
}

TEST(TextReading, ReadsNoNumberThatDoesNotFit) {
  EXPECT_EQ(wholeNumber<std::int32_t>("2147483648"), std::nullopt);
  EXPECT_EQ(wholeNumber<std::uint64_t>("18446744073709551616"), std::nullopt);
}

TEST(TextReading, TakesANumberOffTheFrontOfAText) {
  std::string_view text = "12 and more";
  EXPECT_EQ(takeWholeNumber<int>(text), 12);
  EXPECT_EQ(text, " and more");
  EXPECT_EQ(takeWholeNumber<int>(text), std::nullopt);
  EXPECT_EQ(text, " and more");
}

TEST(TextReading, TrimsBlanksOnlyAtTheTwoEnds) {
  EXPECT_EQ(trimmed(" \t two words\t"), "two words");
  EXPECT_EQ(trimmed(" \t "), "");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed("\nline\n", "\n"), "line");
}

}  // namespace
}  // namespace tidewell
