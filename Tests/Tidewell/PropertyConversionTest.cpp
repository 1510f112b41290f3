#include "Tidewell/PropertyConversion.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <locale>
#include <string>
#include <string_view>
#include <vector>

namespace tidewell {
namespace {

using Texts = std::vector<std::string>;

PropertyValue text(const char* characters) {
  return std::string(characters);
}

PropertyValue integer(std::int64_t value) {
  return value;
}

const PropertyValue kNothing;
const PropertyValue kList = Texts{"a", "b"};

TEST(PropertyConversion, ReadsAValueOfTheWantedTypeAsItIs) {
  EXPECT_EQ(integerValue(integer(-7)), -7);
  EXPECT_EQ(realValue(2.5), 2.5);
  EXPECT_TRUE(booleanValue(true));
  EXPECT_FALSE(booleanValue(false));
  EXPECT_EQ(stringListValue(kList), (Texts{"a", "b"}));
  EXPECT_EQ(stringListValue(Texts{}), Texts{});
}

TEST(PropertyConversion, CutsARealTowardZero) {
  EXPECT_EQ(integerValue(12.9), 12);
  EXPECT_EQ(integerValue(-12.9), -12);
}

TEST(PropertyConversion, ReadsARealBeyondTheRangeAsTheNearestInteger) {
  EXPECT_EQ(integerValue(1e300), 9223372036854775807);
  EXPECT_EQ(integerValue(-1e300), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(integerValue(9223372036854775808.0), 9223372036854775807);
  EXPECT_EQ(integerValue(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(integerValue(std::numeric_limits<double>::infinity()), 9223372036854775807);
}

TEST(PropertyConversion, ReadsNotANumberAsTheIntegerZero) {
  EXPECT_EQ(integerValue(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(PropertyConversion, ReadsATruthValueAsANumber) {
  EXPECT_EQ(integerValue(true), 1);
  EXPECT_EQ(integerValue(false), 0);
  EXPECT_EQ(realValue(true), 1.0);
  EXPECT_EQ(realValue(false), 0.0);
}

TEST(PropertyConversion, ReadsTheIntegerThatBeginsAText) {
  EXPECT_EQ(integerValue(text("120")), 120);
  EXPECT_EQ(integerValue(text(" \t-42 seconds")), -42);
  EXPECT_EQ(integerValue(text("+5")), 5);
  EXPECT_EQ(integerValue(text("007")), 7);
  EXPECT_EQ(integerValue(text("12.9")), 12);
  EXPECT_EQ(integerValue(text("0x10")), 0);
}

TEST(PropertyConversion, ReadsATextWithoutANumberAsZero) {
  for (const char* characters : {"", "-", "+", "abc", ".", "e5", "- 5", "--5", "nan", "inf"}) {
    EXPECT_EQ(integerValue(text(characters)), 0) << characters;
    EXPECT_EQ(realValue(text(characters)), 0.0) << characters;
  }
}

TEST(PropertyConversion, SkipsNothingButBlanksBeforeANumber) {
  for (char first = '!'; first <= '~'; ++first) {
    if (std::string_view("+-0123456789").find(first) != std::string_view::npos) continue;
    EXPECT_EQ(integerValue(std::string{first, '5'}), 0) << first;
    EXPECT_EQ(realValue(std::string{first, '5'}), first == '.' ? 0.5 : 0.0) << first;
    const bool saysYes = std::string_view("YyTt").find(first) != std::string_view::npos;
    EXPECT_EQ(booleanValue(std::string{first, '5'}), saysYes) << first;
  }
}

TEST(PropertyConversion, ReadsATextBeyondTheRangeAsTheNearestInteger) {
  EXPECT_EQ(integerValue(text("9223372036854775806")), 9223372036854775806);
  EXPECT_EQ(integerValue(text("9223372036854775807")), 9223372036854775807);
  EXPECT_EQ(integerValue(text("9223372036854775808")), 9223372036854775807);
  EXPECT_EQ(integerValue(text("99999999999999999999999")), 9223372036854775807);
  EXPECT_EQ(integerValue(text("-9223372036854775807")), -9223372036854775807);
  EXPECT_EQ(integerValue(text("-9223372036854775808")), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(integerValue(text("-9223372036854775809")), std::numeric_limits<std::int64_t>::min());
}

TEST(PropertyConversion, ReadsTheRealThatBeginsAText) {
  EXPECT_EQ(realValue(text("12.5%")), 12.5);
  EXPECT_EQ(realValue(text(" -.5")), -0.5);
  EXPECT_EQ(realValue(text("+3.")), 3.0);
  EXPECT_EQ(realValue(text("1e3x")), 1000.0);
  EXPECT_EQ(realValue(text("2.5E-1")), 0.25);
  EXPECT_EQ(realValue(text("0x10")), 0.0);
}

TEST(PropertyConversion, IgnoresAnExponentWithoutDigits) {
  EXPECT_EQ(realValue(text("12e")), 12.0);
  EXPECT_EQ(realValue(text("12e+")), 12.0);
  EXPECT_EQ(realValue(text("12em")), 12.0);
}

TEST(PropertyConversion, ReadsATextBeyondTheRangeAsTheLargestReal) {
  EXPECT_EQ(realValue(text("1e999")), std::numeric_limits<double>::max());
  EXPECT_EQ(realValue(text("-1e999")), std::numeric_limits<double>::lowest());
}

struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
};

TEST(PropertyConversion, DoesNotDependOnTheUsersLanguage) {
  const std::locale former = std::locale::global(std::locale(std::locale(), new DecimalComma));
  const double value = realValue(text("2.5"));
  std::locale::global(former);
  EXPECT_EQ(value, 2.5);
}

TEST(PropertyConversion, ReadsEveryNumberButZeroAsTrue) {
  EXPECT_TRUE(booleanValue(integer(1)));
  EXPECT_TRUE(booleanValue(integer(-3)));
  EXPECT_FALSE(booleanValue(integer(0)));
  EXPECT_TRUE(booleanValue(0.25));
  EXPECT_FALSE(booleanValue(0.0));
  EXPECT_FALSE(booleanValue(-0.0));
}

TEST(PropertyConversion, ReadsTextsOfYesTrueAndNumbersAsTrue) {
  for (const char* characters : {"YES", "yes", "Y", "true", "TRUE", "t", "1", "-1", " 007", "2x"}) {
    EXPECT_TRUE(booleanValue(text(characters))) << characters;
  }
}

TEST(PropertyConversion, ReadsAllOtherTextsAsFalse) {
  for (const char* characters : {"", "NO", "no", "false", "0", "000", "-", "on", "0.5", "nyet"}) {
    EXPECT_FALSE(booleanValue(text(characters))) << characters;
  }
}

TEST(PropertyConversion, SkipsOneSignAndThenZerosBeforeATruthValue) {
  for (const char* characters : {"-01", "+007", " \t+00y"})
    EXPECT_TRUE(booleanValue(text(characters))) << characters;
  for (const char* characters : {"0-1", "0+1", "--1", "-0", "0 1"})
    EXPECT_FALSE(booleanValue(text(characters))) << characters;
}

TEST(PropertyConversion, ReadsListsAndUnknownTypesAsNoNumber) {
  EXPECT_EQ(integerValue(kList), 0);
  EXPECT_EQ(realValue(kList), 0.0);
  EXPECT_FALSE(booleanValue(kList));
  EXPECT_EQ(integerValue(kNothing), 0);
  EXPECT_EQ(realValue(kNothing), 0.0);
  EXPECT_FALSE(booleanValue(kNothing));
}

TEST(PropertyConversion, ReadsOnlyAListOfTextsAsAList) {
  EXPECT_EQ(stringListValue(kNothing), std::nullopt);
  EXPECT_EQ(stringListValue(text("a")), std::nullopt);
  EXPECT_EQ(stringListValue(integer(1)), std::nullopt);
}

}  // namespace
}  // namespace tidewell
