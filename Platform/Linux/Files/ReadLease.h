#pragma once

#include <filesystem>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Keeps a file from being opened for writing: while the lease is held, such an opening waits. So
/// hold it only for a moment. Where the file system or the file's owner does not allow a lease, no
/// lease is held and nobody waits.
class ReadLease {
 public:
  explicit ReadLease(const std::filesystem::path& file);

  /// Whether the lease was refused, because the file is open for writing already or because a file
  /// server does not grant a lease. Then no lease is held.
  [[nodiscard]] bool isRefused() const { return isRefused_; }

  /// Whether somebody is waiting to open the file for writing.
  [[nodiscard]] bool isWanted() const;

 private:
  Descriptor file_;
  bool isRefused_ = false;
  bool isHeld_ = false;
};

}  // namespace platform
