#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "Platform/Linux/Files/FileStamp.h"

namespace platform {

/// The file that was found at a path. `error` is a text for people. When it is set, the other
/// fields mean nothing.
struct RegularFile {
  bool exists = false;
  std::string text;
  FileStamp stamp;  ///< Empty for a file that does not exist.
  std::string error;
};

/// Reads a whole file of at most `capacity` bytes. Never waits for a pipe or a device. A folder, a
/// pipe and a device are errors, but a missing file is not. Symbolic links are followed.
[[nodiscard]] RegularFile readRegularFile(const std::filesystem::path& path, std::size_t capacity);

}  // namespace platform
