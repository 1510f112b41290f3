#include "Tidewell/PropertyConversion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>

namespace tidewell {
namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr std::string_view kDigits = "0123456789";
constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

std::string_view withoutLeading(std::string_view text, std::string_view characters) {
  text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
  return text;
}

/// How many digits of `text` follow one another from `position` on.
std::size_t digitsAt(std::string_view text, std::size_t position) {
  return std::min(text.find_first_not_of(kDigits, position), text.size()) - position;
}

std::size_t signsAt(std::string_view text, std::size_t position) {
  return position < text.size() && (text[position] == '+' || text[position] == '-') ? 1 : 0;
}

/// The decimal number at the very beginning of `text`; empty when there is none.
std::string_view leadingNumber(std::string_view text) {
  std::size_t end = signsAt(text, 0);
  std::size_t digits = digitsAt(text, end);
  end += digits;
  if (end < text.size() && text[end] == '.') {
    digits += digitsAt(text, end + 1);
    end += 1 + digitsAt(text, end + 1);
  }
  if (digits == 0) return {};
  if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
    const std::size_t exponent = end + 1 + signsAt(text, end + 1);
    const std::size_t exponentDigits = exponent <= text.size() ? digitsAt(text, exponent) : 0;
    if (exponentDigits > 0) end = exponent + exponentDigits;
  }
  return text.substr(0, end);
}

std::int64_t integerOf(std::string_view text) {
  text = withoutLeading(text, kBlanks);
  const bool isNegative = text.starts_with('-');
  text.remove_prefix(signsAt(text, 0));
  std::int64_t value = 0;
  for (const char character : text.substr(0, digitsAt(text, 0))) {
    // The value is counted downwards, because there is one more negative integer than positive
    // ones.
    const int digit = character - '0';
    if (value < (kSmallest + digit) / 10) return isNegative ? kSmallest : kLargest;
    value = value * 10 - digit;
  }
  if (isNegative) return value;
  return value == kSmallest ? kLargest : -value;
}

std::int64_t integerOf(double value) {
  constexpr double limit = 9223372036854775808.0;  // 2^63, the first that does not fit.
  if (std::isnan(value)) return 0;
  if (value >= limit) return kLargest;
  if (value < -limit) return kSmallest;
  return static_cast<std::int64_t>(value);
}

double realOf(std::string_view text) {
  std::istringstream stream{std::string(leadingNumber(withoutLeading(text, kBlanks)))};
  stream.imbue(std::locale::classic());
  double value = 0;
  stream >> value;  // A failure gives 0, an overflow the largest number.
  return value;
}

bool booleanOf(std::string_view text) {
  text = withoutLeading(text, kBlanks);
  text.remove_prefix(signsAt(text, 0));
  text = withoutLeading(text, "0");
  return !text.empty() &&
         std::string_view("123456789YyTt").find(text.front()) != std::string_view::npos;
}

}  // namespace

std::int64_t integerValue(const PropertyValue& value) {
  if (const auto* boolean = std::get_if<bool>(&value)) return *boolean ? 1 : 0;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return *integer;
  if (const auto* real = std::get_if<double>(&value)) return integerOf(*real);
  if (const auto* text = std::get_if<std::string>(&value)) return integerOf(*text);
  return 0;
}

double realValue(const PropertyValue& value) {
  if (const auto* boolean = std::get_if<bool>(&value)) return *boolean ? 1.0 : 0.0;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return static_cast<double>(*integer);
  if (const auto* real = std::get_if<double>(&value)) return *real;
  if (const auto* text = std::get_if<std::string>(&value)) return realOf(*text);
  return 0.0;
}

bool booleanValue(const PropertyValue& value) {
  if (const auto* boolean = std::get_if<bool>(&value)) return *boolean;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return *integer != 0;
  if (const auto* real = std::get_if<double>(&value)) return *real != 0.0;
  if (const auto* text = std::get_if<std::string>(&value)) return booleanOf(*text);
  return false;
}

std::optional<std::vector<std::string>> stringListValue(const PropertyValue& value) {
  const auto* list = std::get_if<std::vector<std::string>>(&value);
  return list == nullptr ? std::nullopt : std::optional(*list);
}

}  // namespace tidewell
