#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace platform {

/// Makes `content` the file at `path`, which nobody but this user may read: its mode is 0600. The
/// file appears in one step, so that at any moment it is whole: the old one or the new one. Only a
/// regular file is replaced. A symbolic link, a device, a pipe or a folder at `path` is an error,
/// and so is the absence of its folder. Returns why it failed, for people, and an empty text on
/// success. Any thread.
[[nodiscard]] std::string writeOwnFile(const std::filesystem::path& path, std::string_view content);

}  // namespace platform
