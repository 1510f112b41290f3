#include "Staylit/SettingMeaning.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "Staylit/Prefs.h"

namespace staylit {
namespace {

using Integer = std::int64_t;

/// "counts", or "wants: counts", or "wants: counts, consequence".
std::string meaning(std::string_view key, const tidewell::PropertyValue& value) {
  const tidewell::SettingMeaning meaning = meaningOfSetting(key, value);
  return (meaning.wants.empty() ? "" : meaning.wants + ": ") + meaning.counts +
         (meaning.consequence.empty() ? "" : ", " + meaning.consequence);
}

TEST(SettingMeaning, IsTheValueWithinTheLimits) {
  EXPECT_EQ(meaning("graceSeconds", Integer{30}), "30");
  EXPECT_EQ(meaning("graceSeconds", Integer{600}), "600");
  EXPECT_EQ(meaning("sustainSeconds", Integer{1}), "1");
  EXPECT_EQ(meaning("batteryThreshold", Integer{0}), "0");
  EXPECT_EQ(meaning("batteryThreshold", Integer{100}), "100");
  EXPECT_EQ(meaning("netThresholdKBps", 0.5), "0.5");
  EXPECT_EQ(meaning("keepScreenOn", true), "true");
}

TEST(SettingMeaning, IsWhatTheEngineMakesOfAValueBeyondThem) {
  EXPECT_EQ(meaning("graceSeconds", Integer{5}), "a number from 30 to 600: 30");
  EXPECT_EQ(meaning("graceSeconds", 99.9), "a whole number: 99");
  EXPECT_EQ(meaning("graceSeconds", 99.0), "99");
  EXPECT_EQ(meaning("netThresholdKBps", std::nan("")),
            "a number above 0: nan, nothing ever counts as working");
  EXPECT_EQ(meaning("history.enabled", std::string("nope")), "false");
  EXPECT_EQ(meaning("graceSeconds", Integer{601}), "a number from 30 to 600: 600");
  EXPECT_EQ(meaning("sustainSeconds", Integer{0}), "a number of at least 1: 1");
  EXPECT_EQ(meaning("batteryThreshold", Integer{101}),
            "a number from 0 to 100: 101, nothing is ever held on battery");
  EXPECT_EQ(meaning("batteryThreshold", Integer{-1}),
            "a number from 0 to 100: -1, no charge is too low for a hold");
  for (const char* key : {"cpuThresholdPercent", "diskThresholdKBps", "netThresholdKBps"}) {
    EXPECT_EQ(meaning(key, 0.0), "a number above 0: 0, every application counts as working");
    EXPECT_EQ(meaning(key, Integer{-3}),
              "a number above 0: -3, every application counts as working");
  }
}

TEST(SettingMeaning, IsWhatTheConversionsMakeOfAnotherKind) {
  EXPECT_EQ(meaning("graceSeconds", std::string("90 s")), "90");
  EXPECT_EQ(meaning("graceSeconds", std::string("soon")), "a number from 30 to 600: 30");
  EXPECT_EQ(meaning("cpuThresholdPercent", std::string("high")),
            "a number above 0: 0, every application counts as working");
  EXPECT_EQ(meaning("keepScreenOn", std::string("yes")), "true");
  EXPECT_EQ(meaning("keepScreenOn", std::string("on")), "false");
  EXPECT_EQ(meaning("ignoredApps", std::string("make")), "an empty list");
}

TEST(SettingMeaning, HasEverySetting) {
  for (const auto& [key, value] : registeredSettings()) {
    EXPECT_NE(meaningOfSetting(key, value).counts, "") << key;
    EXPECT_EQ(meaningOfSetting(key, value).wants, "") << key;
  }
  EXPECT_EQ(meaning("unknown", Integer{1}), "");
}

}  // namespace
}  // namespace staylit
