#include "Tidewell/SharedText.h"

#include <gtest/gtest.h>

#include <string>

namespace tidewell {
namespace {

const char* memoryOf(const SharedText& text) {
  return std::string_view(text).data();
}

TEST(SharedText, EqualTextsAreInMemoryOnce) {
  SharedTexts texts;
  const SharedText first = texts.share("/usr/bin/cc");
  const SharedText second = texts.share(std::string("/usr/bin/") + "cc");
  EXPECT_EQ(first, "/usr/bin/cc");
  EXPECT_EQ(memoryOf(first), memoryOf(second));
  EXPECT_NE(memoryOf(first), memoryOf(texts.share("/usr/bin/ld")));
}

TEST(SharedText, AnEmptyTextNeedsNoMemory) {
  EXPECT_TRUE(SharedText().empty());
  EXPECT_TRUE(SharedTexts().share("").empty());
  EXPECT_EQ(SharedText(), "");
}

TEST(SharedText, ATextOutlivesWhoSharedIt) {
  SharedText text;
  {
    SharedTexts texts;
    text = texts.share("/usr/bin/cc");
  }
  EXPECT_EQ(text, "/usr/bin/cc");
}

TEST(SharedText, WhatSomebodyHoldsIsStillSharedAfterManyTextsThatNobodyHolds) {
  SharedTexts texts;
  const SharedText held = texts.share("/usr/bin/cc");
  for (int number = 0; number < 1000; ++number)
    texts.share("/usr/bin/passing-" + std::to_string(number));
  EXPECT_EQ(memoryOf(held), memoryOf(texts.share("/usr/bin/cc")));
}

TEST(SharedText, TextsThatNobodyHoldsDoNotGatherUp) {
  SharedTexts texts;
  for (int number = 0; number < 10'000; ++number)
    texts.share("/usr/bin/passing-" + std::to_string(number));
  EXPECT_LE(texts.size(), 64U);
}

}  // namespace
}  // namespace tidewell
