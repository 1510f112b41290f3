#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tidewell {

/// One character, or one broken sequence.
struct Utf8Sequence {
  std::size_t length = 0;  ///< In bytes; at least 1.
  /// Absent for a broken sequence. Its `length` then counts the bytes that could have begun one
  /// character.
  std::optional<std::uint32_t> codePoint;
};

/// The sequence that `bytes` begin with. `bytes` must not be empty.
[[nodiscard]] Utf8Sequence firstSequence(std::string_view bytes);

/// Whether `bytes` is well-formed UTF-8: no stray or missing continuation, no surrogate, nothing
/// longer than needed, nothing beyond U+10FFFF.
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

}  // namespace tidewell
