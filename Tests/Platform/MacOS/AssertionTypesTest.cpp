#include "Platform/MacOS/Sleep/AssertionTypes.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(AssertionTypes, NameWhatTheSystemKnowsEachKindBy) {
  EXPECT_STREQ(assertionType(tidewell::AssertionKind::system), "PreventUserIdleSystemSleep");
  EXPECT_STREQ(assertionType(tidewell::AssertionKind::display), "PreventUserIdleDisplaySleep");
}

TEST(AssertionTypes, SwitchAnAssertionOnByThisLevel) {
  EXPECT_EQ(kAssertionLevelOn, 255U);
}

}  // namespace
}  // namespace platform
