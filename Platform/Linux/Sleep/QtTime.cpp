#include "Platform/Linux/Sleep/QtTime.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>

#include "Tidewell/TextReading.h"

namespace platform {
namespace {

constexpr std::string_view kBegin = "@Variant(";
constexpr std::size_t kBytes = 8;
/// Qt's number for such a value.
constexpr std::uint32_t kTimeOfDay = 15;

std::string_view withoutQuotes(std::string_view text) {
  const bool isQuoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return isQuoted ? text.substr(1, text.size() - 2) : text;
}

/// The byte that a sign after a backslash stands for.
std::optional<char> escapedByte(char sign) {
  constexpr std::string_view kSigns = "0abfnrtv\"\\";
  constexpr std::string_view kMeant("\0\a\b\f\n\r\t\v\"\\", kSigns.size());
  const std::size_t at = kSigns.find(sign);
  return at == std::string_view::npos ? std::nullopt : std::optional(kMeant[at]);
}

/// Takes one byte off the front.
std::optional<char> takeByte(std::string_view& text) {
  const auto take = [&text](std::size_t count) {
    const std::string_view taken = text.substr(0, count);
    text.remove_prefix(taken.size());
    return taken;
  };
  const std::string_view first = take(1);
  if (first.empty()) return std::nullopt;
  if (first.front() != '\\') return first.front();
  const std::string_view sign = take(1);
  if (sign.empty()) return std::nullopt;
  if (sign.front() != 'x') return escapedByte(sign.front());
  std::uint8_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (error != std::errc()) return std::nullopt;
  take(static_cast<std::size_t>(end - text.data()));
  return static_cast<char>(value);
}

/// Qt writes the most significant byte first.
std::uint32_t numberIn(std::string_view bytes) {
  std::uint32_t number = 0;
  for (const char byte : bytes)
    number = number * 256 + static_cast<unsigned char>(byte);
  return number;
}

}  // namespace

std::optional<std::chrono::milliseconds> parseQtTime(std::string_view written) {
  std::string_view text = withoutQuotes(tidewell::trimmed(written));
  if (!text.starts_with(kBegin) || !text.ends_with(')')) return std::nullopt;
  text = text.substr(kBegin.size(), text.size() - kBegin.size() - 1);
  std::string bytes;
  while (!text.empty()) {
    const auto byte = takeByte(text);
    if (!byte) return std::nullopt;
    bytes += *byte;
  }
  if (bytes.size() != kBytes) return std::nullopt;
  const std::string_view all = bytes;
  if (numberIn(all.substr(0, 4)) != kTimeOfDay) return std::nullopt;
  const std::chrono::milliseconds time(numberIn(all.substr(4)));
  return time < std::chrono::days(1) ? std::optional(time) : std::nullopt;
}

}  // namespace platform
