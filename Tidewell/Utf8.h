#pragma once

#include <string_view>

namespace tidewell {

/// Whether `bytes` is well-formed UTF-8: no stray or missing continuation, no surrogate, nothing
/// longer than needed, nothing beyond U+10FFFF.
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

}  // namespace tidewell
