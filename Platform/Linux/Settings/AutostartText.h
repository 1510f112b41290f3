#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

/// The desktop file that starts `command`, which is a word made by `quotedWord` or `startingWord`.
[[nodiscard]] std::string autostartText(std::string_view command);

/// `word` as one word of a desktop file's `Exec`, whatever characters it contains.
[[nodiscard]] std::string quotedWord(std::string_view word);

/// The word that starts `program`. It is the program's name where every session finds the program
/// under its name, so that the entry stays right when an update moves the program. Otherwise it is
/// the path.
[[nodiscard]] std::string startingWord(const std::filesystem::path& program);

}  // namespace platform
