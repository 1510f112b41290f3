#pragma once

#include <string_view>

namespace platform {

/// Writes the whole `content` to the file with this descriptor, which the caller keeps, however
/// many system calls that takes. Returns false and sets `errno` on failure; some of the content may
/// then be in the file. It does not wait for the disk. Any thread.
[[nodiscard]] bool writeWhole(int file, std::string_view content);

}  // namespace platform
