#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

namespace platform {

/// The folders of the XDG base directory rules, from the environment at each call. A value that
/// is not an absolute path counts as not set, as the rules demand.

/// `XDG_CONFIG_HOME`, else `~/.config`. Empty without a home.
[[nodiscard]] std::filesystem::path xdgConfigHome();

/// `XDG_DATA_HOME`, else `~/.local/share`, and then those of `XDG_DATA_DIRS`, else
/// `/usr/local/share` and `/usr/share`: the most important first.
[[nodiscard]] std::vector<std::filesystem::path> xdgDataFolders();

/// The absolute paths of a list that colons part, as in `PATH`.
[[nodiscard]] std::vector<std::filesystem::path> absolutePaths(std::string_view list);

}  // namespace platform
