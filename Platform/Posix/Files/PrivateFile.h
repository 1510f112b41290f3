#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

/// Files that nobody but this user may read. Safe from any thread. Both functions return why they
/// failed, for people to read, and an empty text when all is well.

/// Makes `content` the file at `path`, with the mode 0600. The file appears in one step, so that at
/// any moment it is whole: the old one or the new one. Only a regular file is replaced. A symbolic
/// link, a device, a pipe or a folder at `path` is an error, and so is the absence of its folder.
[[nodiscard]] std::string writePrivateFile(const std::filesystem::path& path,
                                           std::string_view content);

/// Makes the folder at `path`, with the mode 0700, unless it is there. A folder that is there must
/// belong to this user, and nobody else may write to it. The folder above must exist.
[[nodiscard]] std::string makePrivateFolder(const std::filesystem::path& path);

}  // namespace platform
