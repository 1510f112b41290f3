#include "Staylit/SettingMeaning.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "Staylit/Prefs.h"
#include "Tidewell/PropertyConversion.h"

namespace staylit {
namespace {

using tidewell::PropertyValue;
using tidewell::SettingMeaning;

std::string inWords(double number) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%g", number);
  return text.data();
}

SettingMeaning meaningOfGrace(std::int64_t seconds) {
  const std::int64_t counts = std::clamp(seconds, kShortestGraceSeconds, kLongestGraceSeconds);
  const std::string limits = "a number from " + std::to_string(kShortestGraceSeconds) + " to " +
                             std::to_string(kLongestGraceSeconds);
  return {std::to_string(counts), counts == seconds ? "" : limits, ""};
}

SettingMeaning meaningOfSustain(std::int64_t seconds) {
  const std::int64_t counts = std::max<std::int64_t>(1, seconds);
  return {std::to_string(counts), counts == seconds ? "" : "a number of at least 1", ""};
}

SettingMeaning meaningOfBattery(std::int64_t percent) {
  const std::string counts = std::to_string(percent);
  if (percent < 0) return {counts, "a number from 0 to 100", "no charge is too low for a hold"};
  if (percent > 100) {
    return {counts, "a number from 0 to 100", "nothing is ever held on battery"};
  }
  return {counts, "", ""};
}

SettingMeaning meaningOfThreshold(double threshold) {
  const std::string counts = inWords(threshold);
  if (threshold > 0) return {counts, "", ""};
  return {counts, "a number above 0", "every application counts as working"};
}

std::string inWords(bool flag) {
  return flag ? "true" : "false";
}

std::string inWords(const PropertyValue& list) {
  const auto texts = tidewell::stringListValue(list);
  return texts && !texts->empty() ? "the list" : "an empty list";
}

}  // namespace

tidewell::SettingMeaning meaningOfSetting(std::string_view key, const PropertyValue& value) {
  if (key == keys::graceSeconds) return meaningOfGrace(tidewell::integerValue(value));
  if (key == keys::sustainSeconds) return meaningOfSustain(tidewell::integerValue(value));
  if (key == keys::batteryThreshold) return meaningOfBattery(tidewell::integerValue(value));
  if (key == keys::ignoredApps) return {inWords(value), "", ""};
  for (const std::string_view threshold :
       {keys::cpuThresholdPercent, keys::diskThresholdKBps, keys::netThresholdKBps}) {
    if (key == threshold) return meaningOfThreshold(tidewell::realValue(value));
  }
  if (registeredSettings().contains(key)) {
    return {inWords(tidewell::booleanValue(value)), "", ""};
  }
  return {};
}

}  // namespace staylit
