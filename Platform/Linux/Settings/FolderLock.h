#pragma once

#include <filesystem>
#include <string>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Keeps other processes that honour it from changing the files of a folder, for as long as it
/// lives. Where a file system knows no locks it is held by nobody and hinders nobody.
class FolderLock {
 public:
  /// Waits a second at most for another holder. When the folder cannot be opened or stays locked,
  /// `error` says so and nothing is held.
  explicit FolderLock(const std::filesystem::path& folder);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  [[nodiscard]] const std::string& error() const { return error_; }
  /// Whether the error is that another holds the lock.
  [[nodiscard]] bool isHeldByAnother() const { return isHeldByAnother_; }

  /// Writes what was renamed in the folder through to the disk.
  void synchronize() const;

 private:
  Descriptor folder_;
  std::string error_;
  bool isHeldByAnother_ = false;
};

}  // namespace platform
