#pragma once

#include <sys/stat.h>

#include <cstdint>

namespace platform {

/// Tells one state of a file from another without reading it.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = -1;
  std::int64_t modifiedNanos = 0;  ///< Since the epoch.

  static FileStamp of(const struct stat& status);

  /// Whether a further change would give another stamp. A change that follows at once may have the
  /// same time, because file systems count time in steps of up to two seconds.
  [[nodiscard]] bool isSettled() const;

  bool operator==(const FileStamp&) const = default;
};

}  // namespace platform
