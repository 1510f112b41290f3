#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tidewell {

// Text that others wrote: what processes, applications, units and inhibitors call themselves.
//
// Such text passes `cleaned` once, where it enters the program. All code behind that point may
// show, log, send and compare it as it is. All functions here are safe from any thread.

/// In characters; longer than any name or reason that is meant to be read.
inline constexpr std::size_t kLongestForeignText = 1024;

/// `bytes` as text that is safe to show, to log and to send: valid UTF-8 on one line.
///
/// Each broken sequence, control character, line or paragraph separator, mark that turns the
/// direction of writing, and code point that D-Bus refuses becomes one U+FFFD. All other text stays
/// as it is, byte by byte. A text of more than `mostCharacters` is cut there and gets an ellipsis.
/// Two names that differ only in what is replaced may become equal.
[[nodiscard]] std::string cleaned(std::string_view bytes,
                                  std::size_t mostCharacters = kLongestForeignText);

/// `text` for places where some readers expect markup and others do not: each character that begins
/// markup becomes one that looks like it and has no meaning.
[[nodiscard]] std::string withoutMarkup(std::string_view text);

/// `bytes` as valid UTF-8: each broken sequence becomes one U+FFFD.
[[nodiscard]] std::string wellFormed(std::string_view bytes);

/// `text`, which is valid UTF-8, with an ellipsis in place of all after `mostCharacters`.
[[nodiscard]] std::string shortened(std::string text, std::size_t mostCharacters);

}  // namespace tidewell
