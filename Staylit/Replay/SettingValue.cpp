#include "Staylit/Replay/SettingValue.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <variant>
#include <vector>

#include "Staylit/Prefs.h"
#include "Tidewell/PropertyConversion.h"
#include "Tidewell/TextReading.h"

namespace staylit {
namespace {

using tidewell::PropertyValue;

struct Range {
  std::string_view key;
  double least;
  double most;
};

constexpr double kEndless = std::numeric_limits<double>::infinity();
constexpr double kOneDay = 86'400;
constexpr std::array<Range, 6> kRanges = {{
    {keys::graceSeconds, kShortestGraceSeconds, kLongestGraceSeconds},
    {keys::sustainSeconds, 1, kOneDay},
    {keys::cpuThresholdPercent, 0, kEndless},
    {keys::diskThresholdKBps, 0, kEndless},
    {keys::netThresholdKBps, 0, kEndless},
    {keys::batteryThreshold, 0, 100},
}};

/// Takes digits off the front of `text`. False when there is none.
bool takeDigits(std::string_view& text) {
  const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
  text.remove_prefix(count);
  return count > 0;
}

/// Whether all of `text` is a decimal number, with or without a fraction.
bool isDecimal(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  if (!takeDigits(text)) return false;
  if (text.empty()) return true;
  if (text.front() != '.') return false;
  text.remove_prefix(1);
  return takeDigits(text) && text.empty();
}

std::optional<double> realNumber(std::string_view text) {
  if (!isDecimal(text)) return std::nullopt;
  return tidewell::realValue(PropertyValue(std::string(text)));
}

/// Takes a text in quotes off the front of `text`: literal in single ones; in double ones, a
/// backslash makes a quote or a backslash plain.
std::optional<std::string> takeQuoted(std::string_view& text) {
  if (text.empty() || (text.front() != '"' && text.front() != '\'')) return std::nullopt;
  const char quote = text.front();
  std::string value;
  for (std::size_t place = 1; place < text.size(); ++place) {
    if (text[place] == quote) {
      text.remove_prefix(place + 1);
      return value;
    }
    const bool isEscape = quote == '"' && text[place] == '\\';
    if (isEscape && ++place == text.size()) break;
    if (isEscape && text[place] != '"' && text[place] != '\\') break;
    value.push_back(text[place]);
  }
  return std::nullopt;
}

std::optional<std::vector<std::string>> quotedTexts(std::string_view text) {
  if (text.size() < 2 || text.front() != '[' || text.back() != ']') return std::nullopt;
  text = tidewell::trimmed(text.substr(1, text.size() - 2));
  std::vector<std::string> texts;
  while (!text.empty()) {
    auto next = takeQuoted(text);
    if (!next) return std::nullopt;
    texts.push_back(std::move(*next));
    text = tidewell::trimmed(text);
    if (text.empty()) break;
    if (text.front() != ',') return std::nullopt;
    text = tidewell::trimmed(text.substr(1));
  }
  return texts;
}

/// Reads a text as a value of the kind that a default is of.
struct Parsing {
  std::string_view text;

  std::optional<PropertyValue> operator()(bool) const {
    if (text == "true") return true;
    if (text == "false") return false;
    return std::nullopt;
  }
  std::optional<PropertyValue> operator()(std::int64_t) const {
    return tidewell::wholeNumber<std::int64_t>(text);
  }
  std::optional<PropertyValue> operator()(double) const { return realNumber(text); }
  std::optional<PropertyValue> operator()(const std::vector<std::string>&) const {
    return quotedTexts(text);
  }
  template <typename Other>
  std::optional<PropertyValue> operator()(const Other&) const {
    return std::nullopt;
  }
};

/// What a value of the kind looks like.
struct KindName {
  std::string operator()(bool) const { return "true or false"; }
  std::string operator()(std::int64_t) const { return "a whole number"; }
  std::string operator()(double) const { return "a number"; }
  template <typename Other>
  std::string operator()(const Other&) const {
    return "a list, such as [\"firefox\"]";
  }
};

std::optional<double> numberIn(const PropertyValue& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return static_cast<double>(*integer);
  if (const auto* real = std::get_if<double>(&value)) return *real;
  return std::nullopt;
}

std::string rangeError(std::string_view key, const PropertyValue& value) {
  const auto range = std::ranges::find(kRanges, key, &Range::key);
  const auto number = numberIn(value);
  if (range == kRanges.end() || !number) return {};
  if (*number >= range->least && *number <= range->most) return {};
  const auto text = [](double limit) { return std::to_string(static_cast<std::int64_t>(limit)); };
  const std::string least = std::string(key) + " is at least " + text(range->least);
  return std::isfinite(range->most) ? least + " and at most " + text(range->most) : least;
}

}  // namespace

std::optional<SettingValue> settingValue(std::string_view text, std::string& error) {
  const std::size_t sign = text.find('=');
  const std::string key(tidewell::trimmed(text.substr(0, sign)));
  const auto settings = registeredSettings();
  const auto setting = settings.find(key);
  if (sign == std::string_view::npos || setting == settings.end()) {
    error = sign == std::string_view::npos ? "\"" + std::string(text) + "\" is not key=value"
                                           : "there is no setting \"" + key + "\"";
    return std::nullopt;
  }
  const std::string_view given = tidewell::trimmed(text.substr(sign + 1));
  auto value = std::visit(Parsing{given}, setting->second);
  error = value ? rangeError(key, *value) : key + " is " + std::visit(KindName(), setting->second);
  if (!error.empty()) return std::nullopt;
  return SettingValue{key, std::move(*value)};
}

}  // namespace staylit
