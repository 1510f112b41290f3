#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// A piece of a tape, compressed and with a checksum, so that damage is noticed and what was
/// written before it is not lost.
namespace staylit::tapeBlock {

/// The most bytes that one block can hold before compression.
inline constexpr std::size_t kCapacity = std::size_t{1} << 24;

/// The block of `content`, which has at most `kCapacity` bytes. Empty when there is no memory for
/// the compression.
[[nodiscard]] std::string packed(std::string_view content);

/// Takes the block off the front of `bytes` and returns its content. Absent, with `bytes` as it
/// was, when there is no whole and undamaged block.
[[nodiscard]] std::optional<std::string> takeUnpacked(std::string_view& bytes);

}  // namespace staylit::tapeBlock
