#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "Tidewell/Utf8.h"

namespace platform {

/// The replacement for something that is no character.
inline constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

/// The length of the well-formed UTF-8 sequence at the beginning of `bytes`; 0 when there is none.
inline std::size_t leadingCharacterLength(std::string_view bytes) {
  for (std::size_t length = 1; length <= 4 && length <= bytes.size(); ++length) {
    if (tidewell::isValidUtf8(bytes.substr(0, length))) return length;
  }
  return 0;
}

/// `bytes` with U+FFFD for each byte that is not part of a well-formed UTF-8 sequence.
inline std::string repairedUtf8(std::string_view bytes) {
  if (tidewell::isValidUtf8(bytes)) return std::string(bytes);
  std::string repaired;
  while (!bytes.empty()) {
    const std::size_t length = leadingCharacterLength(bytes);
    repaired += length == 0 ? kReplacementCharacter : bytes.substr(0, length);
    bytes.remove_prefix(length == 0 ? 1 : length);
  }
  return repaired;
}

/// The longest beginning of the well-formed `text` that has at most `capacity` bytes and ends with
/// a whole character.
inline std::string_view cutToBytes(std::string_view text, std::size_t capacity) {
  if (text.size() <= capacity) return text;
  const auto continues = [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
  };
  while (capacity > 0 && continues(text[capacity]))
    --capacity;
  return text.substr(0, capacity);
}

/// Appends `scalar`, a Unicode scalar value, to `text` as UTF-8.
inline void appendScalar(std::string& text, std::uint32_t scalar) {
  const auto tail = [scalar](unsigned shift) {
    return static_cast<char>(0x80 | ((scalar >> shift) & 0x3F));
  };
  if (scalar < 0x80) {
    text += static_cast<char>(scalar);
  } else if (scalar < 0x800) {
    text += {static_cast<char>(0xC0 | (scalar >> 6)), tail(0)};
  } else if (scalar < 0x10000) {
    text += {static_cast<char>(0xE0 | (scalar >> 12)), tail(6), tail(0)};
  } else {
    text += {static_cast<char>(0xF0 | (scalar >> 18)), tail(12), tail(6), tail(0)};
  }
}

/// `units` as UTF-8, with U+FFFD for each surrogate that has no partner.
inline std::string utf8FromUtf16(std::span<const std::uint16_t> units) {
  std::string text;
  text.reserve(units.size());
  for (std::size_t index = 0; index < units.size(); ++index) {
    const std::uint32_t unit = units[index];
    const std::uint32_t next = index + 1 < units.size() ? units[index + 1] : std::uint32_t{0};
    if (unit < 0xD800 || unit > 0xDFFF) {
      appendScalar(text, unit);
    } else if (unit < 0xDC00 && next >= 0xDC00 && next <= 0xDFFF) {
      appendScalar(text, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
      ++index;
    } else {
      text += kReplacementCharacter;
    }
  }
  return text;
}

}  // namespace platform
