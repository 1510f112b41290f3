#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Reads the files of `/proc`. A file that vanishes during the reading is absent. One thread at a
/// time.
class ProcFileSystem {
 public:
  /// The size to which longer files are cut. Long control groups of many hierarchies fit.
  static constexpr std::size_t kFileCapacity = 16384;

  /// `root` is "/proc", or a folder of the same shape.
  explicit ProcFileSystem(const std::string& root = "/proc");

  /// The identifiers of all processes, ascending. Absent when the folder cannot be read.
  std::optional<std::vector<std::int32_t>> pids();

  /// The identifier that the kernel gave last to a process or a thread, from the last field of
  /// `loadavg`. Absent when it cannot be read.
  std::optional<std::int32_t> newestPid();

  /// The content of file `name` of process `pid`. It is valid until the next call.
  std::optional<std::string_view> read(std::int32_t pid, const char* name);

  /// Does the same with a descriptor that `open` returned. Each call reads the file from its
  /// beginning, with its present content.
  std::optional<std::string_view> read(const Descriptor& file);

  /// Empty when the file cannot be opened.
  Descriptor open(std::int32_t pid, const char* name);

  /// The target of a symbolic link of the process, valid until the next call. When it is absent,
  /// `errno` says why.
  std::optional<std::string_view> readLink(std::int32_t pid, const char* name);

 private:
  const char* path(std::int32_t pid, const char* name);

  Descriptor root_;
  char path_[64];
  char buffer_[kFileCapacity];
};

}  // namespace platform
