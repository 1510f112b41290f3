#pragma once

#include <filesystem>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Makes everybody wait who wants to open a file for writing, for as long as it lives. To be held
/// for a moment only. Where the file system or the file's owner does not allow that, nobody waits.
class ReadLease {
 public:
  explicit ReadLease(const std::filesystem::path& file);

  /// Whether somebody has the file open for writing already, or the file is a server's that grants
  /// no lease now. Then nothing is held.
  [[nodiscard]] bool isRefused() const { return isRefused_; }

  /// Whether somebody waits to open the file for writing.
  [[nodiscard]] bool isWanted() const;

 private:
  Descriptor file_;
  bool isRefused_ = false;
  bool isHeld_ = false;
};

}  // namespace platform
