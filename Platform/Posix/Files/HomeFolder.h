#pragma once

#include <filesystem>

namespace platform {

/// The user's home folder: `HOME` if it is an absolute path, or else the folder in the user
/// database. Empty when there is neither.
[[nodiscard]] std::filesystem::path homeFolder();

/// The user's home folder, independent of the environment: the folder in the user database. For a
/// user whom the database does not know, it is that of `homeFolder`.
[[nodiscard]] std::filesystem::path lastingHomeFolder();

}  // namespace platform
