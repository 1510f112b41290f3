#pragma once

#include <gtest/gtest.h>

#include <compare>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace platform {

/// The contract of text, which every system keeps, in any language that sorts an ä before a z.
template <typename Text>
class TextContract : public ::testing::Test {
 protected:
  std::weak_ordering compare(std::string_view left, std::string_view right) {
    return text_.localizedCaseInsensitiveCompare(left, right);
  }

  Text text_;
};

TYPED_TEST_SUITE_P(TextContract);

TYPED_TEST_P(TextContract, LowersPlainLetters) {
  EXPECT_EQ(this->text_.lowercased("COM.Apple.Safari-1_[Z]@"), "com.apple.safari-1_[z]@");
  EXPECT_EQ(this->text_.lowercased(""), "");
}

TYPED_TEST_P(TextContract, LowersLettersOfAnyScript) {
  EXPECT_EQ(this->text_.lowercased("ÄÖÜ ÉCLAIR ДОМ ΣΊΣΥΦΟΣ"), "äöü éclair дом σίσυφος");
  EXPECT_EQ(this->text_.lowercased("日本"), "日本");
}

TYPED_TEST_P(TextContract, LowersALetterToSeveral) {
  EXPECT_EQ(this->text_.lowercased("\u0130"), "i\u0307");
}

TYPED_TEST_P(TextContract, LowersTextThatGrows) {
  std::string capitals;
  std::string small;
  for (int count = 0; count < 1000; ++count) {
    capitals += "\u0130";  // This letter has two bytes, and three when lowered.
    capitals += "\u023A";  // This one too.
    small += "i\u0307\u2C65";
  }
  EXPECT_EQ(this->text_.lowercased(capitals), small);
}

TYPED_TEST_P(TextContract, ComparesWithoutRegardToCase) {
  EXPECT_EQ(this->compare("firefox", "FireFox"), std::weak_ordering::equivalent);
  EXPECT_EQ(this->compare("apple", "Banana"), std::weak_ordering::less);
  EXPECT_EQ(this->compare("Banana", "apple"), std::weak_ordering::greater);
  EXPECT_EQ(this->compare("", ""), std::weak_ordering::equivalent);
  EXPECT_EQ(this->compare("", "a"), std::weak_ordering::less);
}

TYPED_TEST_P(TextContract, TellsAccentsApart) {
  EXPECT_EQ(this->compare("resume", "résumé"), std::weak_ordering::less);
  EXPECT_EQ(this->compare("résumé", "resumf"), std::weak_ordering::less);
}

TYPED_TEST_P(TextContract, PadsAndCutsPlainText) {
  EXPECT_EQ(this->text_.padded("abc", 5), "abc  ");
  EXPECT_EQ(this->text_.padded("abc", 3), "abc");
  EXPECT_EQ(this->text_.padded("abc", 2), "ab");
  EXPECT_EQ(this->text_.padded("abc", 0), "");
  EXPECT_EQ(this->text_.padded("", 2), "  ");
}

TYPED_TEST_P(TextContract, PadsByCharactersAsAReaderCountsThem) {
  EXPECT_EQ(this->text_.padded("Größe", 6), "Größe ");
  EXPECT_EQ(this->text_.padded("e\u0301a", 3), "e\u0301a ");
  EXPECT_EQ(this->text_.padded("👩‍💻x", 3), "👩‍💻x ");
  EXPECT_EQ(this->text_.padded("🇩🇪🇫🇷", 3), "🇩🇪🇫🇷 ");
}

TYPED_TEST_P(TextContract, CutsBetweenCharacters) {
  EXPECT_EQ(this->text_.padded("e\u0301a", 1), "e\u0301");
  EXPECT_EQ(this->text_.padded("👩‍💻x", 1), "👩‍💻");
  EXPECT_EQ(this->text_.padded("日本語", 2), "日本");
  EXPECT_EQ(this->text_.padded("é", 0), "");
}

TYPED_TEST_P(TextContract, TreatsABrokenSequenceAsTheReplacementCharacter) {
  EXPECT_EQ(this->text_.lowercased("A\xFF"
                                   "B"),
            "a\uFFFDb");
  EXPECT_EQ(this->compare("a\xFF", "a\uFFFD"), std::weak_ordering::equivalent);
  EXPECT_EQ(this->text_.padded("a\xFF", 3), "a\uFFFD ");
}

TYPED_TEST_P(TextContract, IsSafeFromAnyThread) {
  std::vector<std::thread> threads;
  std::vector<int> wrong(4, 0);
  for (int& errors : wrong) {
    threads.emplace_back([this, &errors] {
      for (int round = 0; round < 200; ++round) {
        if (this->text_.padded("é👩‍💻", 3) != "é👩‍💻 ") ++errors;
        if (this->text_.lowercased("ÄB") != "äb") ++errors;
        if (this->compare("ä", "Z") >= 0) ++errors;
      }
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

REGISTER_TYPED_TEST_SUITE_P(TextContract, LowersPlainLetters, LowersLettersOfAnyScript,
                            LowersALetterToSeveral, LowersTextThatGrows,
                            ComparesWithoutRegardToCase, TellsAccentsApart, PadsAndCutsPlainText,
                            PadsByCharactersAsAReaderCountsThem, CutsBetweenCharacters,
                            TreatsABrokenSequenceAsTheReplacementCharacter, IsSafeFromAnyThread);

}  // namespace platform
