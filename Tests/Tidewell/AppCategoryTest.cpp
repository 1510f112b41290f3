#include "Tidewell/AppCategory.h"

#include <gtest/gtest.h>

#include <string_view>
#include <utility>
#include <vector>

namespace tidewell {
namespace {

TEST(AppCategory, HasSixCasesFromVideoAndAudioToOther) {
  const std::vector<AppCategory> expected = {AppCategory::videoAudio, AppCategory::downloads,
                                             AppCategory::aiAgents,   AppCategory::development,
                                             AppCategory::syncBackup, AppCategory::other};
  EXPECT_EQ(std::vector<AppCategory>(kAllAppCategories.begin(), kAllAppCategories.end()), expected);
}

TEST(AppCategory, HasATextForPeople) {
  EXPECT_EQ(rawValue(AppCategory::videoAudio), "Video & Audio");
  EXPECT_EQ(rawValue(AppCategory::downloads), "Downloads");
  EXPECT_EQ(rawValue(AppCategory::aiAgents), "AI Agents");
  EXPECT_EQ(rawValue(AppCategory::development), "Development");
  EXPECT_EQ(rawValue(AppCategory::syncBackup), "Sync & Backup");
  EXPECT_EQ(rawValue(AppCategory::other), "Other");
}

TEST(AppCategory, HasASymbol) {
  EXPECT_EQ(symbol(AppCategory::videoAudio), "film");
  EXPECT_EQ(symbol(AppCategory::downloads), "arrow.down.circle");
  EXPECT_EQ(symbol(AppCategory::aiAgents), "sparkles");
  EXPECT_EQ(symbol(AppCategory::development), "hammer");
  EXPECT_EQ(symbol(AppCategory::syncBackup), "arrow.triangle.2.circlepath");
  EXPECT_EQ(symbol(AppCategory::other), "app.dashed");
}

TEST(AppCategory, IsMadeFromEachOfTheSixTexts) {
  EXPECT_EQ(appCategoryFromRawValue("Video & Audio"), AppCategory::videoAudio);
  EXPECT_EQ(appCategoryFromRawValue("Downloads"), AppCategory::downloads);
  EXPECT_EQ(appCategoryFromRawValue("AI Agents"), AppCategory::aiAgents);
  EXPECT_EQ(appCategoryFromRawValue("Development"), AppCategory::development);
  EXPECT_EQ(appCategoryFromRawValue("Sync & Backup"), AppCategory::syncBackup);
  EXPECT_EQ(appCategoryFromRawValue("Other"), AppCategory::other);
}

TEST(AppCategory, IsNotMadeFromALowerCaseText) {
  EXPECT_EQ(appCategoryFromRawValue("other"), std::nullopt);
}

TEST(AppCategory, IsNotMadeFromAnyOtherText) {
  EXPECT_EQ(appCategoryFromRawValue(""), std::nullopt);
  EXPECT_EQ(appCategoryFromRawValue("Other "), std::nullopt);
  EXPECT_EQ(appCategoryFromRawValue("film"), std::nullopt);
}

}  // namespace
}  // namespace tidewell
