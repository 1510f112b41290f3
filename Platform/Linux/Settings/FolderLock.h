#pragma once

#include <filesystem>
#include <string>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Locks a folder, for as long as it exists, against other processes that use this lock. On a file
/// system without locks it locks nothing.
class FolderLock {
 public:
  /// Waits for a second at most while another process holds the lock. When the folder cannot be
  /// opened, or stays locked, `error` says so and the lock is not held.
  explicit FolderLock(const std::filesystem::path& folder);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  [[nodiscard]] const std::string& error() const { return error_; }
  /// Whether the lock is not held because another process holds it.
  [[nodiscard]] bool isHeldByAnother() const { return isHeldByAnother_; }

  /// Makes the disk store the names of the folder's files, so that a renaming survives a crash.
  void synchronize() const;

 private:
  Descriptor folder_;
  std::string error_;
  bool isHeldByAnother_ = false;
};

}  // namespace platform
