#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "Platform/Linux/Files/FileStamp.h"

namespace platform {

/// What was found in the place of a file. When `error` is set, which is a text for people, the
/// other fields mean nothing.
struct RegularFile {
  bool exists = false;
  std::string text;
  FileStamp stamp;  ///< Empty for a file that does not exist.
  std::string error;
};

/// Reads a whole file of at most `capacity` bytes. Never waits, whatever stands in the file's
/// place: a folder, a pipe and a device are errors; a missing file is none. Links are followed.
[[nodiscard]] RegularFile readRegularFile(const std::filesystem::path& path, std::size_t capacity);

}  // namespace platform
