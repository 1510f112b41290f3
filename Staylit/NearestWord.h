#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace staylit {

/// The word of `words` that somebody probably meant who wrote `written`: it begins with `written`,
/// or a few letters differ. Absent where none is near.
[[nodiscard]] std::optional<std::string> nearestWord(std::string_view written,
                                                     std::span<const std::string_view> words);

}  // namespace staylit
