#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Tidewell/Utf8.h"

namespace platform::stub {

/// `text` as UTF-16; absent for anything but valid UTF-8.
inline std::optional<std::u16string> utf16(std::string_view text) {
  if (!tidewell::isValidUtf8(text)) return std::nullopt;
  std::u16string units;
  for (std::size_t index = 0; index < text.size();) {
    const auto lead = static_cast<std::uint8_t>(text[index++]);
    const int more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    std::uint32_t scalar = more == 0 ? lead : lead & (0x3FU >> more);
    for (int count = 0; count < more; ++count)
      scalar = scalar << 6 | (static_cast<std::uint8_t>(text[index++]) & 0x3FU);
    if (scalar >= 0x10000) {
      units += static_cast<char16_t>(0xD800 + ((scalar - 0x10000) >> 10));
      scalar = 0xDC00 + (scalar & 0x3FF);
    }
    units += static_cast<char16_t>(scalar);
  }
  return units;
}

}  // namespace platform::stub
