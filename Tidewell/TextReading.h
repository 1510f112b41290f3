#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>

namespace tidewell {

/// The whole number in base 10 that `text` begins with, and takes off `text`. Only a signed type
/// knows a minus, and none a plus. Absent when there is no number or it does not fit.
template <std::integral Integer>
std::optional<Integer> cutWholeNumber(std::string_view& text) {
  Integer value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return value;
}

/// The same of a text that holds the number and nothing else.
template <std::integral Integer>
std::optional<Integer> wholeNumber(std::string_view text) {
  const auto value = cutWholeNumber<Integer>(text);
  return text.empty() ? value : std::nullopt;
}

/// `text` without the blanks at its two ends.
inline std::string_view trimmed(std::string_view text, std::string_view blanks = " \t") {
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace tidewell
