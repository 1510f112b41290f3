#include "Tidewell/Utf8.h"

#include <gtest/gtest.h>

#include <string_view>

namespace tidewell {
namespace {

using namespace std::string_view_literals;

TEST(Utf8, AcceptsNothingAndASCII) {
  EXPECT_TRUE(isValidUtf8(""));
  EXPECT_TRUE(isValidUtf8("Safari.123,456,789,\n"));
  EXPECT_TRUE(isValidUtf8("a\0b"sv));
}

TEST(Utf8, AcceptsTheFirstAndLastCharacterOfEachLength) {
  EXPECT_TRUE(isValidUtf8("\x7F"));
  EXPECT_TRUE(isValidUtf8("\xC2\x80"));
  EXPECT_TRUE(isValidUtf8("\xDF\xBF"));
  EXPECT_TRUE(isValidUtf8("\xE0\xA0\x80"));
  EXPECT_TRUE(isValidUtf8("\xEF\xBF\xBF"));
  EXPECT_TRUE(isValidUtf8("\xF0\x90\x80\x80"));
  EXPECT_TRUE(isValidUtf8("\xF4\x8F\xBF\xBF"));
}

TEST(Utf8, AcceptsTheNeighboursOfTheSurrogates) {
  EXPECT_TRUE(isValidUtf8("\xED\x9F\xBF"));
  EXPECT_TRUE(isValidUtf8("\xEE\x80\x80"));
}

TEST(Utf8, RejectsSurrogates) {
  EXPECT_FALSE(isValidUtf8("\xED\xA0\x80"));
  EXPECT_FALSE(isValidUtf8("\xED\xBF\xBF"));
}

TEST(Utf8, RejectsOverlongForms) {
  EXPECT_FALSE(isValidUtf8("\xC0\x80"));
  EXPECT_FALSE(isValidUtf8("\xC1\xBF"));
  EXPECT_FALSE(isValidUtf8("\xE0\x9F\xBF"));
  EXPECT_FALSE(isValidUtf8("\xF0\x8F\xBF\xBF"));
}

TEST(Utf8, RejectsNumbersBeyondTheLastCodePoint) {
  EXPECT_FALSE(isValidUtf8("\xF4\x90\x80\x80"));
  EXPECT_FALSE(isValidUtf8("\xF5\x80\x80\x80"));
  EXPECT_FALSE(isValidUtf8("\xFF"));
}

TEST(Utf8, RejectsAStrayContinuation) {
  EXPECT_FALSE(isValidUtf8("\x80"));
  EXPECT_FALSE(
      isValidUtf8("a\xBF"
                  "b"));
  EXPECT_FALSE(isValidUtf8("\xC3\xA9\xA9"));
}

TEST(Utf8, RejectsACutSequence) {
  EXPECT_FALSE(isValidUtf8("\xC3"));
  EXPECT_FALSE(isValidUtf8("\xE2\x80"));
  EXPECT_FALSE(isValidUtf8("\xF0\x9F\x98"));
  EXPECT_FALSE(
      isValidUtf8("\xE2\x80"
                  "a"));
}

TEST(Utf8, ReadsNoByteBeyondTheEnd) {
  // The bytes behind the view would complete the sequence.
  constexpr std::string_view dash = "\xE2\x80\x94";
  EXPECT_TRUE(isValidUtf8(dash));
  EXPECT_FALSE(isValidUtf8(dash.substr(0, 2)));
}

}  // namespace
}  // namespace tidewell
