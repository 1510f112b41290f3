#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

namespace platform {

/// The folders of the XDG base directory rules, read from the environment at each call. A value
/// that is not an absolute path counts as not set, as the rules demand.

/// `XDG_CONFIG_HOME`, else `~/.config`. Empty for a user without a home.
[[nodiscard]] std::filesystem::path xdgConfigHome();

/// `XDG_CACHE_HOME`, else `~/.cache`. Empty for a user without a home.
[[nodiscard]] std::filesystem::path xdgCacheHome();

/// `XDG_RUNTIME_DIR`, which goes when the user logs out. Empty where there is none.
[[nodiscard]] std::filesystem::path xdgRuntimeFolder();

/// `XDG_STATE_HOME`, else `~/.local/state`. Empty for a user without a home.
[[nodiscard]] std::filesystem::path xdgStateHome();

/// Where the program keeps its recording of the last day, below `xdgStateHome`; empty where that
/// is.
[[nodiscard]] std::filesystem::path ringFolder();

/// `xdgConfigHome`; then the folders of `XDG_CONFIG_DIRS`, else `/etc/xdg`. The most important
/// folder comes first.
[[nodiscard]] std::vector<std::filesystem::path> xdgConfigFolders();

/// `XDG_DATA_HOME`, else `~/.local/share`; then the folders of `XDG_DATA_DIRS`, else
/// `/usr/local/share` and `/usr/share`. The most important folder comes first.
[[nodiscard]] std::vector<std::filesystem::path> xdgDataFolders();

/// The absolute paths in a list with colons between the paths, such as `PATH`.
[[nodiscard]] std::vector<std::filesystem::path> absolutePaths(std::string_view list);

}  // namespace platform
