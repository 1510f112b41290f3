#pragma once

#include <filesystem>

namespace platform {

/// Where the history is kept: `~/Library/Application Support/Staylit/History`. Empty for a user
/// without a home, who has no history.
[[nodiscard]] std::filesystem::path historyFolder();

}  // namespace platform
