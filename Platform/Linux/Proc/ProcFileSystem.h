#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Reads the files of `/proc`. Whatever vanishes half-read is absent. One thread at a time.
class ProcFileSystem {
 public:
  /// The largest file that is read whole; what is longer is cut. Long control groups of many
  /// hierarchies fit.
  static constexpr std::size_t kFileCapacity = 16384;

  /// `root` is "/proc", or a folder of the same shape.
  explicit ProcFileSystem(const std::string& root = "/proc");

  /// The identifiers of all processes, ascending. Absent when the folder cannot be read.
  std::optional<std::vector<std::int32_t>> pids();

  /// The identifier that the kernel gave out last, to a process or a thread: the last field of
  /// `loadavg`. Absent when that cannot be told.
  std::optional<std::int32_t> newestPid();

  /// The content of file `name` of process `pid`, in a buffer that the next call uses again.
  std::optional<std::string_view> read(std::int32_t pid, const char* name);

  /// As `read`, from a descriptor that `open` returned; a file of `/proc` starts afresh each time.
  std::optional<std::string_view> read(const Descriptor& file);

  /// Empty when it cannot be opened.
  Descriptor open(std::int32_t pid, const char* name);

  /// What a symbolic link of the process points to, in the same buffer. When absent, `errno` says
  /// why.
  std::optional<std::string_view> readLink(std::int32_t pid, const char* name);

 private:
  const char* path(std::int32_t pid, const char* name);

  Descriptor root_;
  char path_[64];
  char buffer_[kFileCapacity];
};

}  // namespace platform
