#pragma once

#include <filesystem>
#include <string_view>

namespace platform {

/// Where this program lies, for starting it again. Empty when that cannot be told.
[[nodiscard]] std::filesystem::path ownProgram();

/// The program that an `exe` link names: without the mark that the kernel adds once the file has
/// been replaced, as an update does.
[[nodiscard]] std::filesystem::path programOfLink(std::string_view link);

}  // namespace platform
