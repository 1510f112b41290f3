#include "Tidewell/ForeignText.h"

#include <gtest/gtest.h>

#include "Tidewell/Utf8.h"

namespace tidewell {
namespace {

TEST(ForeignText, LeavesPlainTextAlone) {
  EXPECT_EQ(cleaned("Firefox 128.0 ~ (esr)"), "Firefox 128.0 ~ (esr)");
  EXPECT_EQ(cleaned(""), "");
}

TEST(ForeignText, LeavesValidTextOfAnyScriptAlone) {
  EXPECT_EQ(cleaned("Größe 日本 👩‍💻 e\u0301"), "Größe 日本 👩‍💻 e\u0301");
}

TEST(ForeignText, ReplacesAStrayByte) {
  EXPECT_EQ(cleaned("a\xFFz"), "a\uFFFDz");
  EXPECT_EQ(cleaned("a\x80z"), "a\uFFFDz");
}

TEST(ForeignText, ReplacesACutSequenceOnce) {
  EXPECT_EQ(cleaned("a\xE2\x82"), "a\uFFFD");
  EXPECT_EQ(cleaned("\xF0\x9F\x98z"), "\uFFFDz");
}

TEST(ForeignText, ReplacesOverlongFormsAndSurrogatesBytewise) {
  EXPECT_EQ(cleaned("\xC0\xAF"), "\uFFFD\uFFFD");
  EXPECT_EQ(cleaned("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
}

TEST(ForeignText, ReplacesControlCharacters) {
  EXPECT_EQ(cleaned("a\nb\tc\x1B[31m\x7F"), "a\uFFFDb\uFFFDc\uFFFD[31m\uFFFD");
  EXPECT_EQ(cleaned("a\u0085b\u009Bc"), "a\uFFFDb\uFFFDc");
  EXPECT_EQ(cleaned(std::string_view("a\0b", 3)), "a\uFFFDb");
}

TEST(ForeignText, ReplacesTheLastControlCharacterAndLeavesItsNeighbourAlone) {
  EXPECT_EQ(cleaned("a\u001F z\u009F\u00A0"), "a\uFFFD z\uFFFD\u00A0");
}

TEST(ForeignText, ReplacesLineSeparatorsAndMarksOfDirection) {
  EXPECT_EQ(cleaned("a\u2028b\u2029c"), "a\uFFFDb\uFFFDc");
  EXPECT_EQ(cleaned("exe.\u202Egpj"), "exe.\uFFFDgpj");
  EXPECT_EQ(cleaned("\u2066x\u2069"), "\uFFFDx\uFFFD");
}

TEST(ForeignText, ReplacesTheCodePointsThatABusRefuses) {
  EXPECT_EQ(cleaned("a\xEF\xBF\xBF"
                    "b"),
            "a\uFFFDb");
  EXPECT_EQ(cleaned("\xEF\xB7\x90"), "\uFFFD");
}

TEST(ForeignText, WellFormedKeepsControlCharacters) {
  EXPECT_EQ(wellFormed("a\nb\xFF"), "a\nb\uFFFD");
}

TEST(ForeignText, ShortensAtTheBorderOfACharacter) {
  EXPECT_EQ(shortened("", 0), "");
  EXPECT_EQ(shortened("abc", 3), "abc");
  EXPECT_EQ(shortened("abcd", 3), "abc…");
  EXPECT_EQ(shortened("äöü", 3), "äöü");
  EXPECT_EQ(shortened("äöüß", 3), "äöü…");
}

TEST(ForeignText, IsCutWhereNobodyReadsAnyMore) {
  EXPECT_EQ(cleaned(std::string(1024, 'x')), std::string(1024, 'x'));
  EXPECT_EQ(cleaned(std::string(1'000'000, 'x')), std::string(1024, 'x') + "…");
  EXPECT_EQ(cleaned("äöüß", 3), "äöü…");
  EXPECT_EQ(cleaned(std::string(100, '\xF0'), 3), "\uFFFD\uFFFD\uFFFD…");
  EXPECT_EQ(cleaned("👩👩👩👩👩", 4), "👩👩👩👩…");
  EXPECT_EQ(cleaned("abc", 0), "…");
}

TEST(ForeignText, IsTheSameWhenItIsCleanedTwice) {
  const std::string once = cleaned(std::string(5000, '\x1B'));
  EXPECT_EQ(cleaned(once), once);
}

TEST(ForeignText, ReplacesTheCharactersThatBeginMarkup) {
  EXPECT_EQ(withoutMarkup("<b>Barnes & Noble</b> &amp;"), "‹b›Barnes ＆ Noble‹/b› ＆amp;");
  EXPECT_EQ(withoutMarkup("ffmpeg: \"182%\" 'CPU'"), "ffmpeg: \"182%\" 'CPU'");
}

TEST(ForeignText, IsValidForEveryPairOfBytes) {
  for (int first = 0; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      const char bytes[] = {static_cast<char>(first), static_cast<char>(second), 'z'};
      ASSERT_TRUE(isValidUtf8(cleaned({bytes, 3}))) << first << ' ' << second;
      ASSERT_TRUE(isValidUtf8(wellFormed({bytes, 3}))) << first << ' ' << second;
    }
  }
}

}  // namespace
}  // namespace tidewell
