#include "Platform/Linux/Settings/SettingsExamination.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/PropertyConversion.h"

namespace platform {
namespace {

using Lines = std::vector<std::string>;

/// Grace is 30 to 600, and everything else means what it says.
tidewell::SettingMeaning meaning(std::string_view key, const tidewell::PropertyValue& value) {
  if (key != "graceSeconds") return {key.starts_with("history") ? "" : "nothing", "", ""};
  const std::int64_t seconds = tidewell::integerValue(value);
  if (seconds < 30) return {"30", "a number from 30 to 600", "it is short"};
  return {std::to_string(seconds), "", ""};
}

Lines problems(const std::string& text) {
  const tidewell::PropertyDictionary known{{"graceSeconds", std::int64_t{120}},
                                           {"cpuThresholdPercent", 15.0},
                                           {"keepScreenOn", false},
                                           {"ignoredApps", std::vector<std::string>()},
                                           {"history", std::monostate()},
                                           {"history.enabled", true}};
  Lines result;
  for (const SettingsProblem& problem : examineSettings(text, known, meaning))
    result.push_back(std::to_string(problem.line) + ": " + problem.text);
  return result;
}

TEST(SettingsExamination, FindsNothingInASoundFile) {
  EXPECT_EQ(problems(""), Lines{});
  EXPECT_EQ(problems("# mine\ngraceSeconds = 60\ncpuThresholdPercent = 20\n"
                     "keepScreenOn = true\nignoredApps = [\"a\"]\n[history]\nenabled = false\n"),
            Lines{});
}

TEST(SettingsExamination, LooksIntoTheTableOfTheHistory) {
  EXPECT_EQ(problems("graceSeconds = 60\n\n[history]\nenabled = 1\ndays = 3\n"),
            (Lines{"4: \"history.enabled\" wants true or false",
                   "5: nobody knows the key \"history.days\", and it does not count"}));
}

TEST(SettingsExamination, NamesEachLineThatCannotBeRead) {
  EXPECT_EQ(problems("graceSeconds = \n\nkeepScreenOn = maybe\ncpuThresholdPercent = 5.0\n"),
            (Lines{"1: it cannot be read, and does not count",
                   "3: it cannot be read, and does not count"}));
}

TEST(SettingsExamination, NamesASecondLineOfTheSameKey) {
  EXPECT_EQ(problems("graceSeconds = 60\ngraceSeconds = 90\n"),
            Lines{"2: it cannot be read, and does not count"});
}

TEST(SettingsExamination, NamesKeysThatNobodyKnows) {
  EXPECT_EQ(problems("graceSeconds = 60\ngraceseconds = 90\nother = 1\n[table]\nx = 1\n"),
            (Lines{"2: nobody knows the key \"graceseconds\", and it does not count; it is written "
                   "\"graceSeconds\"",
                   "3: nobody knows the key \"other\", and it does not count",
                   "4: nobody knows the key \"table\", and it does not count"}));
}

TEST(SettingsExamination, NamesValuesOfAnotherKind) {
  EXPECT_EQ(problems("graceSeconds = \"60\"\nkeepScreenOn = 1\nignoredApps = \"a\"\n"
                     "cpuThresholdPercent = 2020-01-01\nhistory = 1\n"),
            (Lines{"1: \"graceSeconds\" wants a number; 60 counts",
                   "2: \"keepScreenOn\" wants true or false; nothing counts",
                   "3: \"ignoredApps\" wants a list of texts; nothing counts",
                   "4: \"cpuThresholdPercent\" wants a number; nothing counts",
                   "5: \"history\" wants a table"}));
  EXPECT_EQ(problems("ignoredApps = [1]\n"),
            Lines{"1: \"ignoredApps\" wants a list of texts; nothing counts"});
}

TEST(SettingsExamination, NamesValuesBeyondTheLimitsAndWhatCountsInstead) {
  const std::string wants =
      "\"graceSeconds\" wants a number from 30 to 600; 30 counts, so that it is short";
  EXPECT_EQ(problems("graceSeconds = 5\n"), Lines{"1: " + wants});
  EXPECT_EQ(problems("\ngraceSeconds = \"soon\"\n"), Lines{"2: " + wants});
}

TEST(SettingsExamination, TakesEitherKindOfNumber) {
  EXPECT_EQ(problems("graceSeconds = 60.5\ncpuThresholdPercent = 3\n"), Lines{});
}

TEST(SettingsExamination, CleansTheNamesThatItRepeats) {
  EXPECT_EQ(problems("\"a\\u001b[2J\" = 1\n"),
            Lines{"1: nobody knows the key \"a\uFFFD[2J\", and it does not count"});
}

}  // namespace
}  // namespace platform
