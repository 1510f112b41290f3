#include "Staylit/Replay/SettingValue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace staylit {
namespace {

using tidewell::PropertyValue;
using Integer = std::int64_t;
using Texts = std::vector<std::string>;

PropertyValue valueIn(const std::string& text) {
  std::string error;
  const auto setting = settingValue(text, error);
  EXPECT_TRUE(setting) << error;
  return setting ? setting->value : PropertyValue();
}

std::string errorIn(const std::string& text) {
  std::string error;
  EXPECT_FALSE(settingValue(text, error)) << text;
  return error;
}

TEST(SettingValueTest, ReadsEachKindAsTheSettingsFileHasIt) {
  EXPECT_EQ(valueIn("graceSeconds=60"), PropertyValue(Integer{60}));
  EXPECT_EQ(valueIn("cpuThresholdPercent=25"), PropertyValue(25.0));
  EXPECT_EQ(valueIn(" cpuThresholdPercent = 2.5 "), PropertyValue(2.5));
  EXPECT_EQ(valueIn("keepScreenOn=true"), PropertyValue(true));
  EXPECT_EQ(valueIn("honorAppAssertions=false"), PropertyValue(false));
  EXPECT_EQ(valueIn("ignoredApps=[]"), PropertyValue(Texts{}));
  EXPECT_EQ(valueIn(R"(ignoredApps=["firefox", 'a "b"', "c\"d\\"])"),
            PropertyValue(Texts{"firefox", "a \"b\"", "c\"d\\"}));
}

TEST(SettingValueTest, SaysWhatIsWrong) {
  EXPECT_EQ(errorIn("cpu=25"), "there is no setting \"cpu\"");
  EXPECT_EQ(errorIn("graceSeconds"), "\"graceSeconds\" is not key=value");
  EXPECT_EQ(errorIn("graceSeconds=1.5"), "graceSeconds is a whole number");
  EXPECT_EQ(errorIn("graceSeconds=10"), "graceSeconds is at least 30 and at most 600");
  EXPECT_EQ(errorIn("graceSeconds=601"), "graceSeconds is at least 30 and at most 600");
  EXPECT_EQ(errorIn("sustainSeconds=0"), "sustainSeconds is at least 1 and at most 86400");
  EXPECT_EQ(errorIn("cpuThresholdPercent=lots"), "cpuThresholdPercent is a number");
  EXPECT_EQ(errorIn("cpuThresholdPercent=nan"), "cpuThresholdPercent is a number");
  EXPECT_EQ(errorIn("cpuThresholdPercent=-1"), "cpuThresholdPercent is at least 0");
  EXPECT_EQ(errorIn("batteryThreshold=101"), "batteryThreshold is at least 0 and at most 100");
  EXPECT_EQ(errorIn("keepScreenOn=1"), "keepScreenOn is true or false");
  for (const char* list : {"firefox", "[firefox]", "[\"a\" \"b\"]", "[\"a]", "[\"a\\n\"]", "["}) {
    EXPECT_EQ(errorIn(std::string("ignoredApps=") + list),
              "ignoredApps is a list, such as [\"firefox\"]");
  }
}

}  // namespace
}  // namespace staylit
