#include "Staylit/JsonText.h"

#include <gtest/gtest.h>

#include <limits>
#include <string_view>

namespace staylit {
namespace {

TEST(JsonText, PutsPlainTextInQuotes) {
  EXPECT_EQ(jsonText(""), R"("")");
  EXPECT_EQ(jsonText("ffmpeg is working"), R"("ffmpeg is working")");
  EXPECT_EQ(jsonText("Größe — 日本 👩‍💻"), "\"Größe — 日本 👩‍💻\"");
}

TEST(JsonText, EscapesWhatWouldEndTheText) {
  EXPECT_EQ(jsonText(R"(a"b)"), R"("a\"b")");
  EXPECT_EQ(jsonText(R"(C:\new)"), R"("C:\\new")");
}

TEST(JsonText, EscapesControlCharacters) {
  EXPECT_EQ(jsonText("a\nb\tc"), R"("a\u000ab\u0009c")");
  EXPECT_EQ(jsonText("\x1B[31m\x7F"), R"("\u001b[31m\u007f")");
  EXPECT_EQ(jsonText(std::string_view("a\0b", 3)), R"("a\u0000b")");
}

TEST(JsonText, IsValidUtf8WhateverTheBytes) {
  EXPECT_EQ(jsonText("a\xFFz"), "\"a\uFFFDz\"");
  EXPECT_EQ(jsonText("\xED\xA0\x80"), "\"\uFFFD\uFFFD\uFFFD\"");
}

TEST(JsonDecimal, HasOneDigitBehindThePoint) {
  EXPECT_EQ(jsonDecimal(0), "0.0");
  EXPECT_EQ(jsonDecimal(187.24), "187.2");
  EXPECT_EQ(jsonDecimal(187.26), "187.3");
  EXPECT_EQ(jsonDecimal(-0.26), "-0.3");
  EXPECT_EQ(jsonDecimal(-0.01), "0.0");
  EXPECT_EQ(jsonDecimal(99'999'999'999'999.5), "99999999999999.5");
}

TEST(JsonDecimal, IsNullWhereThereIsNoSuchNumber) {
  EXPECT_EQ(jsonDecimal(std::numeric_limits<double>::infinity()), "null");
  EXPECT_EQ(jsonDecimal(-std::numeric_limits<double>::infinity()), "null");
  EXPECT_EQ(jsonDecimal(std::numeric_limits<double>::quiet_NaN()), "null");
  EXPECT_EQ(jsonDecimal(1e15), "null");
}

TEST(JsonList, KeepsTheOrder) {
  EXPECT_EQ(jsonList({}), "[]");
  EXPECT_EQ(jsonList({"1", "null"}), "[1,null]");
}

TEST(JsonObject, HasItsMembersInTheOrderInWhichTheyCame) {
  EXPECT_EQ(JsonObject().text(), "{}");
  EXPECT_EQ(JsonObject()
                .addText("b", "x")
                .addNumber("a", -3)
                .addFlag("yes", true)
                .addFlag("no", false)
                .add("list", "[]")
                .text(),
            R"({"b":"x","a":-3,"yes":true,"no":false,"list":[]})");
}

}  // namespace
}  // namespace staylit
