#pragma once

#include <filesystem>
#include <string>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// As long as it lives, it keeps other processes that use this lock from changing the files of a
/// folder. On a file system without locks nobody holds it, and it keeps nobody off.
class FolderLock {
 public:
  /// Waits a second at most for another holder. When the folder cannot be opened or stays locked,
  /// `error` says so and nothing is held.
  explicit FolderLock(const std::filesystem::path& folder);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  [[nodiscard]] const std::string& error() const { return error_; }
  /// Whether the error is that another process holds the lock.
  [[nodiscard]] bool isHeldByAnother() const { return isHeldByAnother_; }

  /// Writes the renamed files of the folder through to the disk.
  void synchronize() const;

 private:
  Descriptor folder_;
  std::string error_;
  bool isHeldByAnother_ = false;
};

}  // namespace platform
