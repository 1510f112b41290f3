// What this Mac runs on, beside what the system says of it elsewhere.

#include "Platform/MacOS/Power/IOKitPowerSources.h"

#import <Foundation/Foundation.h>
#include <IOKit/ps/IOPowerSources.h>
#include <gtest/gtest.h>

#include <string>

#include "Platform/MacOS/CoreFoundation/CFRef.h"
#include "Platform/MacOS/CoreFoundation/CFText.h"

namespace platform {
namespace {

/// "AC Power", "Battery Power" or "UPS Power".
std::string providingSource() {
  const auto information = CFRef<CFTypeRef>::adopt(IOPSCopyPowerSourcesInfo());
  return utf8(IOPSGetProvidingPowerSourceType(information.get()));
}

TEST(IOKitPowerSources, KnowsWhetherTheWallAdapterFeedsThisMac) {
  const auto source = IOKitPowerSources().source();
  if (!source) {
    EXPECT_EQ(providingSource(), "AC Power") << "without a battery there is nothing else";
    GTEST_SKIP() << "no battery";
  }
  EXPECT_EQ(source->isOnAC, providingSource() == "AC Power");
}

TEST(IOKitPowerSources, TellsTheChargeInPercent) {
  const auto source = IOKitPowerSources().source();
  if (!source) GTEST_SKIP() << "no battery";
  ASSERT_TRUE(source->percentage.has_value());
  EXPECT_GE(*source->percentage, 0);
  EXPECT_LE(*source->percentage, 100);
}

TEST(IOKitPowerSources, TellsLowPowerModeAsTheSystemDoes) {
  EXPECT_EQ(IOKitPowerSources().isLowPowerModeEnabled(),
            NSProcessInfo.processInfo.isLowPowerModeEnabled == YES);
}

}  // namespace
}  // namespace platform
