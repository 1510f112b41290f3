#include "Platform/MacOS/Sleep/AssertionDescription.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform {
namespace {

using tidewell::ListedAssertion;
using tidewell::PropertyValue;

std::optional<std::int64_t> levelOf(const PropertyValue& level) {
  return listedAssertion({{"AssertType", "PreventSystemSleep"}, {"AssertLevel", level}}).level;
}

TEST(AssertionDescription, TellsTypeLevelAndReason) {
  EXPECT_EQ(listedAssertion({{"AssertType", "PreventSystemSleep"},
                             {"AssertLevel", std::int64_t{255}},
                             {"AssertName", "a test is working"},
                             {"AssertPID", std::int64_t{412}}}),
            (ListedAssertion{"PreventSystemSleep", 255, "a test is working"}));
}

TEST(AssertionDescription, TellsNothingOfAnEmptyDictionary) {
  EXPECT_EQ(listedAssertion({}), (ListedAssertion{"", std::nullopt, ""}));
}

TEST(AssertionDescription, TellsNoTypeThatIsNotAText) {
  EXPECT_EQ(listedAssertion({{"AssertType", std::int64_t{1}}}).type, "");
  EXPECT_EQ(listedAssertion({{"AssertType", std::vector<std::string>{"PreventSystemSleep"}}}).type,
            "");
}

TEST(AssertionDescription, TellsALevelOnlyWhenItIsAnInteger) {
  EXPECT_EQ(levelOf(std::int64_t{0}), 0);
  EXPECT_EQ(levelOf(std::int64_t{-1}), -1);
  EXPECT_EQ(levelOf("0"), std::nullopt);
  EXPECT_EQ(levelOf(0.0), std::nullopt);
  EXPECT_EQ(levelOf(false), std::nullopt);
  EXPECT_EQ(levelOf(std::monostate()), std::nullopt);
}

}  // namespace
}  // namespace platform
