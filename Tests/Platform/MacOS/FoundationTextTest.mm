#include "Platform/MacOS/Text/FoundationText.h"

#include <gtest/gtest.h>

#include "Tests/Platform/Text/TextContract.h"

namespace platform {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Foundation, TextContract, FoundationText);

TEST(FoundationText, TreatsEachByteOfABrokenSequenceAsACharacter) {
  EXPECT_EQ(FoundationText().lowercased("A\xE2\x82"), "a\uFFFD\uFFFD");
  EXPECT_EQ(FoundationText().padded("a\xE2\x82", 4), "a\uFFFD\uFFFD ");
}

}  // namespace
}  // namespace platform
