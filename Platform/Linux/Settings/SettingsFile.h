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

/// A small text file that several processes and a person with an editor may change at any time.
///
/// Symbolic links are followed at every call, so that it is always the real file that is read or
/// replaced. Nothing here waits for a pipe or a device in its place; a disk may keep every call
/// waiting. One thread at a time.
class SettingsFile {
 public:
  /// What is larger is no settings file.
  static constexpr std::size_t kCapacity = std::size_t{1} << 20;

  /// How a replacement went; `error` says why one failed.
  struct Change {
    FileReplacement::Outcome outcome;
    std::string error;
  };

  explicit SettingsFile(std::filesystem::path path);

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  /// The present stamp; empty where there is no file, or none that can be looked at.
  [[nodiscard]] FileStamp stamp() const;

  [[nodiscard]] RegularFile read() const;

  /// Locks the folder of the file against other writers; makes the folder first if need be.
  [[nodiscard]] FolderLock lock() const;

  /// Replaces the content at one stroke, provided that it is still what was `read`. To be called
  /// under the lock.
  [[nodiscard]] Change replace(std::string_view text, const RegularFile& read,
                               const FolderLock& lock) const;

 private:
  std::filesystem::path path_;
};

}  // namespace platform
