#include "Platform/Linux/Network/ToolName.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace platform {
namespace {

std::string toolName(std::string_view name) {
  std::string line;
  appendToolName(line, name);
  return line;
}

TEST(ToolName, KeepsAnOrdinaryName) {
  EXPECT_EQ(toolName("Web Content-1.2_(x)"), "Web Content-1.2_(x)");
}

TEST(ToolName, KeepsLettersOfAnyScript) {
  EXPECT_EQ(toolName("Überträger"), "Überträger");
  EXPECT_EQ(toolName("日本\U0001F600"), "日本\U0001F600");
}

TEST(ToolName, ReplacesWhatWouldEndAFieldOrALine) {
  EXPECT_EQ(toolName("a,b\nc\rd"), "a_b_c_d");
}

TEST(ToolName, ReplacesControlCharacters) {
  EXPECT_EQ(toolName(std::string_view("a\0b\x1B\x7F", 5)), "a_b__");
  EXPECT_EQ(toolName("a\xC2\x85z"), "a_z");
}

TEST(ToolName, ReplacesBytesThatAreNotText) {
  EXPECT_EQ(toolName("a\xFFz"), "a_z");
  EXPECT_EQ(toolName("\x80\xC0\xAF"), "___");
}

TEST(ToolName, ReplacesACharacterThatTheKernelCutInTwo) {
  EXPECT_EQ(toolName("fifteen-bytes-\xC3"), "fifteen-bytes-_");
  EXPECT_EQ(toolName("\xE6\x97"), "__");
}

TEST(ToolName, MakesNothingOfNothing) {
  EXPECT_EQ(toolName(""), "");
}

TEST(ToolName, AppendsToTheLine) {
  std::string line = "x.1,2,3,\n";
  appendToolName(line, "curl");
  EXPECT_EQ(line, "x.1,2,3,\ncurl");
}

}  // namespace
}  // namespace platform
