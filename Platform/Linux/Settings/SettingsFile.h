#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "Platform/Linux/Settings/FolderLock.h"
#include "Platform/Linux/System/FileStamp.h"
#include "Platform/Linux/System/RegularFile.h"

namespace platform {

/// A small text file that several processes and a person with an editor may change at any time.
///
/// Symbolic links are followed at every call, so that it is always the real file that is read,
/// replaced or set aside. Nothing here waits: not for a pipe, not for a device in its place. One
/// thread at a time.
class SettingsFile {
 public:
  /// What is larger is no settings file.
  static constexpr std::size_t kCapacity = std::size_t{1} << 20;

  /// How a change went; `error` is empty when it was made.
  struct Change {
    std::filesystem::path path;  ///< The file that is there now.
    std::string error;
  };

  explicit SettingsFile(std::filesystem::path path);

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  /// The present stamp; empty where there is no file, or none that can be looked at.
  [[nodiscard]] FileStamp stamp() const;

  [[nodiscard]] RegularFile read() const;

  /// Locks the folder of the file against other writers; makes the folder first if need be.
  [[nodiscard]] FolderLock lock() const;

  /// Replaces the content at one stroke. To be called under the lock.
  Change replace(std::string_view text, const FolderLock& lock) const;

  /// Gives the file a free name in the same folder and leaves its own free. Under the lock too.
  Change setAside(const FolderLock& lock) const;

 private:
  std::filesystem::path path_;
};

}  // namespace platform
