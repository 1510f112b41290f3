#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tidewell {

/// Text that others wrote: what processes, applications, units and inhibitors call themselves.
///
/// Such text passes `cleaned` once, where it enters the program; everything behind that may show,
/// log, send and compare it as it is. All functions here are safe from any thread.

/// Longer than any name or reason that is meant to be read, in characters.
inline constexpr std::size_t kLongestForeignText = 1024;

/// `bytes` as text that is safe to show, to log and to send: valid UTF-8 on one line.
///
/// Broken sequences, control characters, line and paragraph separators, marks that turn the
/// direction of writing, and the code points that D-Bus refuses become one U+FFFD each. What has
/// more than `mostCharacters` ends there, with an ellipsis. Whatever is text already stays as it
/// is, byte by byte. Two names that differ only in what is no text may become one.
[[nodiscard]] std::string cleaned(std::string_view bytes,
                                  std::size_t mostCharacters = kLongestForeignText);

/// `text` for places of which some readers take markup and others do not: the characters that begin
/// markup become others that look like them and mean nothing.
[[nodiscard]] std::string withoutMarkup(std::string_view text);

/// `bytes` as valid UTF-8: every broken sequence becomes one U+FFFD.
[[nodiscard]] std::string wellFormed(std::string_view bytes);

/// `text`, which is valid UTF-8, with an ellipsis for what it has beyond so many characters.
[[nodiscard]] std::string shortened(std::string text, std::size_t mostCharacters);

}  // namespace tidewell
