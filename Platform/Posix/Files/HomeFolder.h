#pragma once

#include <filesystem>

namespace platform {

/// The user's home folder: `HOME` if it is an absolute path, else what the user database says.
/// Empty when neither knows.
[[nodiscard]] std::filesystem::path homeFolder();

/// The same folder whatever environment the program was started with: what the user database says,
/// and only for a user whom it does not know what `homeFolder` says.
[[nodiscard]] std::filesystem::path lastingHomeFolder();

}  // namespace platform
