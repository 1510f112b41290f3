#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// `bytes` as valid UTF-8: every broken sequence becomes one U+FFFD.
[[nodiscard]] std::string wellFormed(std::string_view bytes);

/// `bytes` as text that is safe to show and to send: valid UTF-8 on one line.
///
/// Broken sequences, control characters, line and paragraph separators, marks that turn the
/// direction of writing, and the code points that D-Bus refuses become one U+FFFD each. A process
/// may call itself anything, so what it calls itself passes here first.
[[nodiscard]] std::string cleaned(std::string_view bytes);

/// `text`, which is valid UTF-8, with an ellipsis for what it has beyond so many characters.
[[nodiscard]] std::string shortened(std::string text, std::size_t mostCharacters);

}  // namespace platform
