#pragma once

#include <filesystem>

namespace platform {

/// The user's home folder: `HOME` if it is an absolute path, else what the user database says.
/// Empty when neither knows.
[[nodiscard]] std::filesystem::path homeFolder();

}  // namespace platform
