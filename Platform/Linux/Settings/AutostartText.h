#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

/// The text of the desktop file that starts `program` with the session. A session passes over the
/// file once the program has been removed.
[[nodiscard]] std::string autostartText(const std::filesystem::path& program);

/// `word` as one word of a desktop file's `Exec`, whatever characters it contains.
[[nodiscard]] std::string quotedWord(std::string_view word);

/// The word that starts `program`. Where every session finds the program by its name, the word is
/// that name, so that it stays right when an update moves the program. Otherwise the word is the
/// path.
[[nodiscard]] std::string startingWord(const std::filesystem::path& program);

}  // namespace platform
