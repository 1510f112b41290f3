#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tidewell {

/// What some bytes begin with.
struct Utf8Piece {
  std::size_t length = 0;  ///< In bytes; at least 1.
  /// Absent for a broken sequence, of which `length` bytes could have become one character.
  std::optional<std::uint32_t> codePoint;
};

/// The first character of `bytes`, or the first broken sequence. `bytes` is not empty.
[[nodiscard]] Utf8Piece firstPiece(std::string_view bytes);

/// Whether `bytes` is well-formed UTF-8: no stray or missing continuation, no surrogate, nothing
/// longer than needed, nothing beyond U+10FFFF.
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

}  // namespace tidewell
