#pragma once

#include <filesystem>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// While it lives, everybody who wants to open a file for writing has to wait. Hold it only for a
/// moment. Where the file system or the file's owner does not allow it, nobody waits.
class ReadLease {
 public:
  explicit ReadLease(const std::filesystem::path& file);

  /// Whether somebody has the file open for writing already, or a file server grants no lease now.
  /// Then nothing is held.
  [[nodiscard]] bool isRefused() const { return isRefused_; }

  /// Whether somebody waits to open the file for writing.
  [[nodiscard]] bool isWanted() const;

 private:
  Descriptor file_;
  bool isRefused_ = false;
  bool isHeld_ = false;
};

}  // namespace platform
