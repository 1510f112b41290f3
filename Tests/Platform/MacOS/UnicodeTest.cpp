#include "Platform/MacOS/Text/Unicode.h"

#include <gtest/gtest.h>

#include <vector>

namespace platform {
namespace {

std::string fromUtf16(const std::vector<std::uint16_t>& units) {
  return utf8FromUtf16(units);
}

TEST(RepairedUtf8, LeavesWellFormedTextAsItIs) {
  EXPECT_EQ(repairedUtf8(""), "");
  EXPECT_EQ(repairedUtf8("/Applications/Caf\xC3\xA9.app"), "/Applications/Caf\xC3\xA9.app");
  EXPECT_EQ(repairedUtf8("\xF0\x9F\x98\x80"), "\xF0\x9F\x98\x80");
}

TEST(RepairedUtf8, ReplacesEachByteThatIsNoPartOfACharacter) {
  EXPECT_EQ(repairedUtf8("a\xFFz"), "a\xEF\xBF\xBDz");
  EXPECT_EQ(repairedUtf8("\x80\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(RepairedUtf8, ReplacesACharacterThatTheEndCutsOff) {
  EXPECT_EQ(repairedUtf8("ab\xC3"), "ab\xEF\xBF\xBD");
}

TEST(RepairedUtf8, KeepsTheCharacterThatFollowsABrokenOne) {
  EXPECT_EQ(repairedUtf8("\xE2\xC3\xA9"), "\xEF\xBF\xBD\xC3\xA9");
}

TEST(RepairedUtf8, ReplacesAnEncodedSurrogate) {
  EXPECT_EQ(repairedUtf8("\xED\xA0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(CutToBytes, LeavesWhatFits) {
  EXPECT_EQ(cutToBytes("abc", 3), "abc");
  EXPECT_EQ(cutToBytes("", 0), "");
}

TEST(CutToBytes, NeverEndsWithinACharacter) {
  EXPECT_EQ(cutToBytes("ab\xC3\xA9z", 4), "ab\xC3\xA9");
  EXPECT_EQ(cutToBytes("ab\xC3\xA9z", 3), "ab");
  EXPECT_EQ(cutToBytes("\xF0\x9F\x98\x80", 3), "");
}

TEST(Utf8FromUtf16, EncodesEveryLength) {
  EXPECT_EQ(fromUtf16({}), "");
  EXPECT_EQ(fromUtf16({0x0041, 0x007F}), "A\x7F");
  EXPECT_EQ(fromUtf16({0x0080, 0x07FF}), "\xC2\x80\xDF\xBF");
  EXPECT_EQ(fromUtf16({0x0800, 0xFFFD}), "\xE0\xA0\x80\xEF\xBF\xBD");
}

TEST(Utf8FromUtf16, JoinsSurrogatePairs) {
  EXPECT_EQ(fromUtf16({0xD83D, 0xDE00}), "\xF0\x9F\x98\x80");
  EXPECT_EQ(fromUtf16({0xD800, 0xDC00, 0xDBFF, 0xDFFF}), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(Utf8FromUtf16, ReplacesASurrogateWithoutAPartner) {
  EXPECT_EQ(fromUtf16({0xD83D}), "\xEF\xBF\xBD");
  EXPECT_EQ(fromUtf16({0xDE00, 0x0041}),
            "\xEF\xBF\xBD"
            "A");
  EXPECT_EQ(fromUtf16({0xD83D, 0xD83D, 0xDE00}), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

}  // namespace
}  // namespace platform
