#pragma once

#include <sys/stat.h>

#include <cstdint>

namespace platform {

/// Tells two states of a file apart without reading the file.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = -1;
  std::int64_t modifiedNanos = 0;  ///< Since the epoch.

  static FileStamp of(const struct stat& status);

  /// Whether a further change will give another stamp. File systems count time in steps of up to
  /// two seconds, so a change that follows at once may have the same time.
  [[nodiscard]] bool isSettled() const;

  bool operator==(const FileStamp&) const = default;
};

}  // namespace platform
