#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

/// The desktop file that starts `command`, a word such as `quotedWord` makes.
[[nodiscard]] std::string autostartText(std::string_view command);

/// `word` as one word of a desktop file's `Exec`, whatever it contains.
[[nodiscard]] std::string quotedWord(std::string_view word);

/// How to start `program`: by its name alone where that is found under it in every session, so that
/// the entry stays right when an update puts the program elsewhere; else by its path.
[[nodiscard]] std::string startingWord(const std::filesystem::path& program);

}  // namespace platform
