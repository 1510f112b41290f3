#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "Platform/Linux/Files/FileReplacement.h"
#include "Platform/Linux/Files/FileStamp.h"
#include "Platform/Linux/Files/RegularFile.h"
#include "Platform/Linux/Settings/FolderLock.h"

namespace platform {

/// A small text file that several processes, and a person with an editor, may change at any time.
///
/// Every call follows symbolic links, so that it always reads or replaces the real file. No call
/// waits for a pipe or a device at the file's path, but a slow disk makes every call slow. One
/// thread at a time.
class SettingsFile {
 public:
  /// A larger file is no settings file.
  static constexpr std::size_t kCapacity = std::size_t{1} << 20;

  /// The outcome of a replacement. `error` says why it failed.
  struct Change {
    FileReplacement::Outcome outcome;
    std::string error;
  };

  explicit SettingsFile(std::filesystem::path path);

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  /// The file's present stamp. Empty when there is no file or it cannot be examined.
  [[nodiscard]] FileStamp stamp() const;

  [[nodiscard]] RegularFile read() const;

  /// Locks the folder of the file against other writers, and makes the folder first if necessary.
  [[nodiscard]] FolderLock lock() const;

  /// Replaces the content in one step, provided that it is still what was `read`. Call it under the
  /// lock.
  [[nodiscard]] Change replace(std::string_view text, const RegularFile& read,
                               const FolderLock& lock) const;

 private:
  std::filesystem::path path_;
};

}  // namespace platform
