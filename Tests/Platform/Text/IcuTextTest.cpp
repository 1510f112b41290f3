#include "Platform/Linux/Text/IcuText.h"

#include <gtest/gtest.h>

#include "Tests/Platform/Text/TextContract.h"

namespace platform {
namespace {

std::weak_ordering compare(const char* locale, std::string_view left, std::string_view right) {
  return IcuText(locale).localizedCaseInsensitiveCompare(left, right);
}

INSTANTIATE_TYPED_TEST_SUITE_P(Icu, TextContract, IcuText);

TEST(IcuText, LowersIndependentlyOfTheLanguage) {
  EXPECT_EQ(IcuText("tr_TR.UTF-8").lowercased("TITLE Ä"), "title ä");
}

TEST(IcuText, LowersBrokenText) {
  EXPECT_EQ(IcuText().lowercased("A\xFF"
                                 "B\xE2\x82"),
            "a\uFFFDb\uFFFD");
}

TEST(IcuText, ComparesWithoutRegardToCase) {
  EXPECT_EQ(compare("en_US.UTF-8", "firefox", "FireFox"), std::weak_ordering::equivalent);
  EXPECT_EQ(compare("en_US.UTF-8", "apple", "Banana"), std::weak_ordering::less);
  EXPECT_EQ(compare("en_US.UTF-8", "Banana", "apple"), std::weak_ordering::greater);
}

TEST(IcuText, TellsAccentsApart) {
  EXPECT_EQ(compare("en_US.UTF-8", "resume", "résumé"), std::weak_ordering::less);
  EXPECT_EQ(compare("en_US.UTF-8", "résumé", "resumf"), std::weak_ordering::less);
}

TEST(IcuText, ComparesByTheRulesOfTheLanguage) {
  EXPECT_EQ(compare("de_DE.UTF-8", "ärger", "zorn"), std::weak_ordering::less);
  EXPECT_EQ(compare("sv_SE.UTF-8", "ärger", "zorn"), std::weak_ordering::greater);
  EXPECT_EQ(compare("sv_SE.UTF-8@euro", "ärger", "zorn"), std::weak_ordering::greater);
}

TEST(IcuText, ComparesForPeopleWhereNoLanguageIsSet) {
  for (const char* locale : {"C", "POSIX", "C.UTF-8", "", "no such locale at all"}) {
    EXPECT_EQ(compare(locale, "apple", "Banana"), std::weak_ordering::less) << locale;
    EXPECT_EQ(compare(locale, "firefox", "FIREFOX"), std::weak_ordering::equivalent) << locale;
  }
}

TEST(IcuText, ComparesBrokenAndEmptyText) {
  EXPECT_EQ(compare("", "a\xFF", "a\uFFFD"), std::weak_ordering::equivalent);
  EXPECT_EQ(compare("", "", ""), std::weak_ordering::equivalent);
  EXPECT_EQ(compare("", "", "a"), std::weak_ordering::less);
}

TEST(IcuText, CountsALineEndAsOneCharacter) {
  EXPECT_EQ(IcuText().padded("\r\nx", 3), "\r\nx ");
}

TEST(IcuText, PadsBrokenText) {
  EXPECT_EQ(IcuText().padded("a\xFF\xE2\x82", 4), "a\uFFFD\uFFFD ");
}

}  // namespace
}  // namespace platform
