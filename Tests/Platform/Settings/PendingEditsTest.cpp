#include "Platform/Linux/Settings/PendingEdits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

#include "Tests/Platform/Settings/IntegerValue.h"

namespace platform {
namespace {

using tidewell::PropertyDictionary;
using tidewell::PropertyValue;

TEST(PendingEdits, HoldAValueThatWasSet) {
  PendingEdits edits;
  const PropertyDictionary file = {{"a", integer(1)}};
  edits.set("a", integer(2), &file);
  edits.set("b", integer(3), &file);
  EXPECT_EQ(edits.values(), (PropertyDictionary{{"a", integer(2)}, {"b", integer(3)}}));
  ASSERT_NE(edits.find("a"), nullptr);
  EXPECT_EQ(*edits.find("a"), integer(2));
  EXPECT_EQ(edits.find("c"), nullptr);
}

TEST(PendingEdits, HoldNoValueThatTheFileHasAlready) {
  PendingEdits edits;
  const PropertyDictionary file = {{"a", integer(1)}, {"n", std::nan("")}};
  edits.set("a", integer(1), &file);
  edits.set("n", std::nan(""), &file);
  EXPECT_TRUE(edits.isEmpty());
}

TEST(PendingEdits, HoldAValueThatIsSetBackBeforeItWasSaved) {
  PendingEdits edits;
  const PropertyDictionary file = {{"a", integer(1)}};
  edits.set("a", integer(2), &file);
  edits.set("a", integer(1), &file);
  EXPECT_EQ(edits.values(), (PropertyDictionary{{"a", integer(1)}}));
}

TEST(PendingEdits, YieldToAnotherValueInTheFile) {
  PendingEdits edits;
  const PropertyDictionary file = {{"a", integer(1)}, {"b", integer(1)}};
  edits.set("a", integer(2), &file);
  edits.set("b", integer(2), &file);
  edits.set("c", integer(2), &file);
  edits.follow({{"b", integer(1)}});
  EXPECT_EQ(edits.values(), (PropertyDictionary{{"b", integer(2)}, {"c", integer(2)}}));
  edits.follow({{"b", integer(1)}, {"c", integer(3)}});
  EXPECT_EQ(edits.values(), (PropertyDictionary{{"b", integer(2)}}));
}

TEST(PendingEdits, YieldOnlyToChangesThatAreSeenAfterTheFileWasFirstRead) {
  PendingEdits edits;
  edits.set("a", integer(2), nullptr);
  edits.follow({{"a", integer(1)}});
  EXPECT_EQ(edits.values(), (PropertyDictionary{{"a", integer(2)}}));
  edits.follow({{"a", integer(3)}});
  EXPECT_TRUE(edits.isEmpty());
}

TEST(PendingEdits, DoNotCountTwoNansAsAChange) {
  PendingEdits edits;
  const PropertyDictionary file = {{"a", std::nan("")}};
  edits.set("a", 2.0, &file);
  edits.follow(file);
  EXPECT_FALSE(edits.isEmpty());
}

TEST(PendingEdits, EndWhenTheyAreSaved) {
  PendingEdits edits;
  const PropertyDictionary file;
  edits.set("a", integer(1), &file);
  const PendingEdits taken = edits;
  edits.settle(taken, {{"a", integer(1)}});
  EXPECT_TRUE(edits.isEmpty());
}

TEST(PendingEdits, StayWhenTheyWereSetWhileOthersWereSaved) {
  PendingEdits edits;
  const PropertyDictionary file;
  edits.set("a", integer(1), &file);
  const PendingEdits taken = edits;
  edits.set("a", integer(2), &file);
  edits.set("b", integer(3), &file);
  const PropertyDictionary saved = {{"a", integer(1)}};
  edits.settle(taken, saved);
  EXPECT_EQ(edits.values(), (PropertyDictionary{{"a", integer(2)}, {"b", integer(3)}}));
  edits.follow(saved);
  EXPECT_EQ(edits.values().size(), 2U);
}

}  // namespace
}  // namespace platform
