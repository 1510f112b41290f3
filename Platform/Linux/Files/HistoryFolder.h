#pragma once

#include <filesystem>

namespace platform {

/// Where the history is kept: `$XDG_STATE_HOME/staylit/history`, or the same below
/// `~/.local/state`; in a unit that has a folder for its state (`STATE_DIRECTORY`), `history` in
/// that folder. Empty for a user without a home, who has no history.
[[nodiscard]] std::filesystem::path historyFolder();

}  // namespace platform
