#pragma once

#include <string>
#include <string_view>

namespace staylit {

/// Text for a page of HTML that is well-formed XML as well. Values only; nothing here fails.
///
/// What programs call themselves is hostile: all such text passes one of these functions.

/// `text`, which may stand in an element or between quotes. What has a meaning in HTML is escaped;
/// control characters and marks that turn the direction of writing are replaced.
[[nodiscard]] std::string htmlText(std::string_view text);

/// A name as an element of its own, so that its direction of writing does not turn what is beside
/// it.
[[nodiscard]] std::string htmlName(std::string_view name);

}  // namespace staylit
