// Scripts that ask for nothing. The prompt for a password is in the checklist for people.

#include "Platform/MacOS/Tasks/AppleScriptRunner.h"

#include <gtest/gtest.h>

#include <string>

namespace platform {
namespace {

tidewell::PrivilegedScripts::Error errorOf(const std::string& source) {
  const auto outcome = AppleScriptRunner().run(source);
  EXPECT_TRUE(outcome.couldBeMade) << source;
  EXPECT_TRUE(outcome.error.has_value()) << source;
  return outcome.error.value_or(tidewell::PrivilegedScripts::Error());
}

TEST(AppleScriptRunner, ReportsNoErrorOfAScriptThatRanWell) {
  for (const std::string source : {"return 1", "do shell script \"true\"", ""}) {
    const auto outcome = AppleScriptRunner().run(source);
    EXPECT_TRUE(outcome.couldBeMade) << source;
    EXPECT_FALSE(outcome.error.has_value()) << source;
  }
}

TEST(AppleScriptRunner, TellsNumberAndTextOfAnError) {
  const auto error = errorOf("error \"No é.\" number 7");
  EXPECT_EQ(error.number, 7);
  EXPECT_NE(error.description, "");
}

TEST(AppleScriptRunner, KnowsThatTheUserDeclinedByItsNumber) {
  EXPECT_EQ(errorOf("error number -128").number, -128);
}

TEST(AppleScriptRunner, TellsThatAShellCommandFailed) {
  EXPECT_EQ(errorOf("do shell script \"exit 3\"").number, 3);
}

TEST(AppleScriptRunner, TellsWhatIsWrongWithASourceThatIsNoScript) {
  const auto error = errorOf("do shell script (");
  EXPECT_TRUE(error.number.has_value());
  EXPECT_NE(error.description, "");
}

}  // namespace
}  // namespace platform
