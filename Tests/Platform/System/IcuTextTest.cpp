#include "Platform/Linux/Unicode/IcuText.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace platform {
namespace {

std::weak_ordering compare(const char* locale, std::string_view left, std::string_view right) {
  return IcuText(locale).localizedCaseInsensitiveCompare(left, right);
}

TEST(IcuText, LowersPlainLetters) {
  EXPECT_EQ(IcuText().lowercased("COM.Apple.Safari-1_[Z]@"), "com.apple.safari-1_[z]@");
  EXPECT_EQ(IcuText().lowercased(""), "");
}

TEST(IcuText, LowersLettersOfAnyScript) {
  EXPECT_EQ(IcuText().lowercased("ÄÖÜ ÉCLAIR ДОМ ΣΊΣΥΦΟΣ"), "äöü éclair дом σίσυφος");
  EXPECT_EQ(IcuText().lowercased("日本"), "日本");
}

TEST(IcuText, LowersALetterToSeveral) {
  EXPECT_EQ(IcuText().lowercased("\u0130"), "i\u0307");
}

TEST(IcuText, LowersTextThatGrows) {
  std::string capitals;
  std::string small;
  for (int count = 0; count < 1000; ++count) {
    capitals += "\u0130";  // Two bytes, and three when lowered.
    capitals += "\u023A";  // Likewise.
    small += "i\u0307\u2C65";
  }
  EXPECT_EQ(IcuText().lowercased(capitals), small);
}

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

TEST(IcuText, PadsAndCutsPlainText) {
  IcuText text;
  EXPECT_EQ(text.padded("abc", 5), "abc  ");
  EXPECT_EQ(text.padded("abc", 3), "abc");
  EXPECT_EQ(text.padded("abc", 2), "ab");
  EXPECT_EQ(text.padded("abc", 0), "");
  EXPECT_EQ(text.padded("", 2), "  ");
}

TEST(IcuText, PadsByCharactersAsAReaderCountsThem) {
  IcuText text;
  EXPECT_EQ(text.padded("Größe", 6), "Größe ");
  EXPECT_EQ(text.padded("e\u0301a", 3), "e\u0301a ");
  EXPECT_EQ(text.padded("👩‍💻x", 3), "👩‍💻x ");
  EXPECT_EQ(text.padded("🇩🇪🇫🇷", 3), "🇩🇪🇫🇷 ");
  EXPECT_EQ(text.padded("\r\nx", 3), "\r\nx ");
}

TEST(IcuText, CutsBetweenCharacters) {
  IcuText text;
  EXPECT_EQ(text.padded("e\u0301a", 1), "e\u0301");
  EXPECT_EQ(text.padded("👩‍💻x", 1), "👩‍💻");
  EXPECT_EQ(text.padded("日本語", 2), "日本");
  EXPECT_EQ(text.padded("é", 0), "");
}

TEST(IcuText, PadsBrokenText) {
  EXPECT_EQ(IcuText().padded("a\xFF\xE2\x82", 4), "a\uFFFD\uFFFD ");
}

TEST(IcuText, IsSafeFromAnyThread) {
  IcuText text("de_DE.UTF-8");
  std::vector<std::thread> threads;
  std::vector<int> wrong(4, 0);
  for (int& errors : wrong) {
    threads.emplace_back([&text, &errors] {
      for (int round = 0; round < 200; ++round) {
        if (text.padded("é👩‍💻", 3) != "é👩‍💻 ") ++errors;
        if (text.lowercased("ÄB") != "äb") ++errors;
        if (text.localizedCaseInsensitiveCompare("ä", "Z") >= 0) ++errors;
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

}  // namespace
}  // namespace platform
