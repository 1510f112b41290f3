#pragma once

#include <filesystem>
#include <string_view>

namespace platform {

/// The path of the running program, for starting it again. Empty when the path cannot be found out.
[[nodiscard]] std::filesystem::path ownProgram();

/// The path in an `exe` link of `/proc`. After an update has replaced the program's file, the
/// kernel adds a mark to the link. The result does not have the mark.
[[nodiscard]] std::filesystem::path programOfLink(std::string_view link);

}  // namespace platform
