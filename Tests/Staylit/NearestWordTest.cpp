#include "Staylit/NearestWord.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace staylit {
namespace {

std::string nearest(std::string_view written) {
  constexpr std::array<std::string_view, 4> kWords = {"status", "settings", "choose-apps", "quit"};
  return nearestWord(written, kWords).value_or("");
}

TEST(NearestWord, ForgivesAFewLetters) {
  EXPECT_EQ(nearest("status"), "status");
  EXPECT_EQ(nearest("stauts"), "status");
  EXPECT_EQ(nearest("setings"), "settings");
  EXPECT_EQ(nearest("quitt"), "quit");
  EXPECT_EQ(nearest("choose_apps"), "choose-apps");
}

TEST(NearestWord, CompletesABeginning) {
  EXPECT_EQ(nearest("choose"), "choose-apps");
  EXPECT_EQ(nearest("sett"), "settings");
}

TEST(NearestWord, FindsNothingFarOff) {
  EXPECT_EQ(nearest(""), "");
  EXPECT_EQ(nearest("x"), "");
  EXPECT_EQ(nearest("explode"), "");
  EXPECT_EQ(nearest(std::string(100'000, 's')), "");
  EXPECT_EQ(nearestWord("status", {}), std::nullopt);
}

}  // namespace
}  // namespace staylit
