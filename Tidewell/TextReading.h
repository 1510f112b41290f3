#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>

namespace tidewell {

/// Takes the decimal whole number off the front of `text` and returns it. Absent, with `text`
/// unchanged, when `text` does not begin with a number or the number does not fit. A minus is part
/// of a number only for a signed type; a plus never is.
template <std::integral Integer>
std::optional<Integer> takeWholeNumber(std::string_view& text) {
  Integer value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return value;
}

/// The decimal whole number that is all of `text`; absent when `text` is anything else. The same
/// rules hold as for `takeWholeNumber`.
template <std::integral Integer>
std::optional<Integer> wholeNumber(std::string_view text) {
  const auto value = takeWholeNumber<Integer>(text);
  return text.empty() ? value : std::nullopt;
}

/// `text` without those characters at its two ends that `blanks` contains.
inline std::string_view trimmed(std::string_view text, std::string_view blanks = " \t") {
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace tidewell
