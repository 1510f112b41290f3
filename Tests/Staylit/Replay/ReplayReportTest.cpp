#include "Staylit/Replay/ReplayReport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Fakes/FakeText.h"

namespace staylit {
namespace {

using std::chrono_literals::operator""min;
using HeldNames = std::vector<std::string>;

ReplayStretch::Side heldFor(HeldNames names) {
  return {true, std::move(names)};
}

ReplayResult resultOf(std::vector<ReplayStretch> stretches) {
  ReplayResult result;
  result.ticks = 100;
  result.program = "Staylit 1.0.0";
  result.stretches = std::move(stretches);
  return result;
}

std::vector<std::string> linesOf(const ReplayResult& plain,
                                 const std::optional<ReplayResult>& changed) {
  tidewell::FakeText text;
  return ReplayReport(plain, changed, {"graceSeconds=30"}).lines(text, {});
}

bool hasLine(const std::vector<std::string>& lines, const char* line) {
  return std::ranges::find(lines, line) != lines.end();
}

TEST(ReplayReport, SaysThatNothingOfADamagedRecordingCanBeRead) {
  ReplayResult result;
  result.hasUnreadableRest = true;
  const HeldNames lines{
      "Nothing of the recording can be read: it was cut off or damaged at its beginning."};
  EXPECT_EQ(linesOf(result, std::nullopt), lines);
}

TEST(ReplayReport, SaysThatARecordingIsEmpty) {
  EXPECT_EQ(linesOf({}, std::nullopt), HeldNames{"The recording has nothing that can be judged."});
}

TEST(ReplayReport, NamesThoseOfWhomTheDifferenceIs) {
  // make was held longest, and that stays as it is.
  const ReplayResult result = resultOf({{60min, heldFor({"make"}), heldFor({"make"})},
                                        {1min, heldFor({"one"}), {}},
                                        {5min, heldFor({"five"}), {}},
                                        {2min, heldFor({"two"}), {}},
                                        {4min, heldFor({"four"}), {}},
                                        {3min, heldFor({"three"}), {}}});
  const auto lines = linesOf(result, result);
  EXPECT_TRUE(hasLine(lines,
                      "With graceSeconds=30 it would have been held for 1 h 0 min: 15 min "
                      "0 s less, of five, four, three, two and 1 more."));
  EXPECT_TRUE(hasLine(lines,
                      "The machine was held for 1 h 15 min: make 1 h 0 min, five 5 min 0 s, "
                      "four 4 min 0 s, three 3 min 0 s and 2 more."));
}

TEST(ReplayReport, NamesTheOneOfWhomAllTheDifferenceIs) {
  const ReplayResult result =
      resultOf({{2min, heldFor({"make"}), heldFor({"make"})}, {1min, {}, heldFor({"curl"})}});
  EXPECT_TRUE(hasLine(linesOf(result, result),
                      "With graceSeconds=30 it would have been held for 3 min 0 s: 1 min 0 s more, "
                      "all of it curl."));
}

}  // namespace
}  // namespace staylit
