#include "Staylit/JsonValue.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace staylit {
namespace {

std::string textIn(std::string_view json) {
  const auto value = JsonValue::read(json);
  return value && value->text() ? *value->text() : "no text";
}

double numberIn(std::string_view json) {
  const auto value = JsonValue::read(json);
  return value ? value->number().value_or(-1) : -1;
}

TEST(JsonValue, ReadsTexts) {
  EXPECT_EQ(textIn(R"("")"), "");
  EXPECT_EQ(textIn(R"("Größe — 日本")"), "Größe — 日本");
  EXPECT_EQ(textIn(R"("\"\\\/\b\f\n\r\t")"), "\"\\/\b\f\n\r\t");
  EXPECT_EQ(textIn(R"("A\u00fC\u20AC")"), "A\u00FC\u20AC");
  EXPECT_EQ(textIn(R"("\ud83d\uDE00")"), "\U0001F600");
  EXPECT_EQ(textIn(" \t\r\n\"a\" \n"), "a");
}

TEST(JsonValue, ReadsNumbers) {
  EXPECT_EQ(numberIn("0"), 0);
  EXPECT_EQ(numberIn("187.2"), 187.2);
  EXPECT_EQ(numberIn("-0.5"), -0.5);
  EXPECT_EQ(numberIn("1763817274123"), 1763817274123.0);
  EXPECT_EQ(numberIn("25e-1"), 2.5);
  EXPECT_EQ(numberIn("1.5E+3"), 1500);
}

TEST(JsonValue, ReadsFlagsListsAndObjects) {
  EXPECT_EQ(JsonValue::read("true")->flag(), true);
  EXPECT_EQ(JsonValue::read("false")->flag(), false);
  EXPECT_EQ(JsonValue::read("null")->flag(), std::nullopt);
  EXPECT_TRUE(JsonValue::read("[]")->list()->empty());
  const auto object = JsonValue::read(R"({ "a" : [1, "x", {}] , "b":{"c":false},"a":2})");
  ASSERT_TRUE(object);
  ASSERT_TRUE(object->member("a"));
  ASSERT_TRUE(object->member("a")->list());
  ASSERT_EQ(object->member("a")->list()->size(), 3U);
  EXPECT_EQ(object->member("a")->list()->at(0).number(), 1);
  EXPECT_EQ(object->member("b")->member("c")->flag(), false);
  EXPECT_EQ(object->member("c"), nullptr);
  EXPECT_EQ(JsonValue::read("1")->member("a"), nullptr);
}

TEST(JsonValue, RefusesWhatIsNotWhole) {
  for (const std::string_view json :
       {"", " ", "{", "[1", "[1,", "\"a", "\"a\\", "\"\\u00", "{\"a\"", "{\"a\":", "{\"a\":1",
        "tru", "-", "1.", "1e", "1e+"}) {
    EXPECT_FALSE(JsonValue::read(json)) << json;
  }
}

TEST(JsonValue, RefusesWhatIsNoJson) {
  for (const std::string_view json :
       {"[1,]",      "{,}",         "{\"a\" 1}",   "{a:1}",       "[1 2]",
        "01",        "+1",          ".5",          "0x10",        "nan",
        "True",      "'a'",         "1 2",         "{}{}",        "\"a\nb\"",
        "\"\\x41\"", "\"\\u12g4\"", "\"\\ud800\"", "\"\\udc00\"", "\"\\ud800\\u0041\"",
        "]",         "1e999"}) {
    EXPECT_FALSE(JsonValue::read(json)) << json;
  }
  EXPECT_FALSE(JsonValue::read("\"\xFF\""));
}

TEST(JsonValue, RefusesDeepNesting) {
  EXPECT_TRUE(JsonValue::read(std::string(32, '[') + std::string(32, ']')));
  EXPECT_FALSE(JsonValue::read(std::string(100'000, '[') + std::string(100'000, ']')));
  EXPECT_FALSE(JsonValue::read(std::string(100'000, '[')));
}

}  // namespace
}  // namespace staylit
