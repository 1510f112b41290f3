#include "Staylit/SettingMeaning.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <variant>

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

/// A fraction is cut off.
SettingMeaning ofWhole(const PropertyValue& value, SettingMeaning (*meaningOf)(std::int64_t)) {
  SettingMeaning meaning = meaningOf(tidewell::integerValue(value));
  const double* real = std::get_if<double>(&value);
  const bool hasFraction = real && std::trunc(*real) != *real;
  if (hasFraction && meaning.wants.empty()) meaning.wants = "a whole number";
  return meaning;
}

SettingMeaning meaningOfThreshold(double threshold) {
  const std::string counts = inWords(threshold);
  if (threshold > 0) return {counts, "", ""};
  if (std::isnan(threshold)) return {counts, "a number above 0", "nothing ever counts as working"};
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
  if (key == keys::graceSeconds) return ofWhole(value, meaningOfGrace);
  if (key == keys::sustainSeconds) return ofWhole(value, meaningOfSustain);
  if (key == keys::batteryThreshold) return ofWhole(value, meaningOfBattery);
  if (key == keys::ignoredApps) return {inWords(value), "", ""};
  for (const std::string_view threshold :
       {keys::cpuThresholdPercent, keys::diskThresholdKBps, keys::netThresholdKBps}) {
    if (key == threshold) return meaningOfThreshold(tidewell::realValue(value));
  }
  if (registeredSettings().contains(key) || registeredHistorySettings().contains(key)) {
    return {inWords(tidewell::booleanValue(value)), "", ""};
  }
  return {};
}

}  // namespace staylit
