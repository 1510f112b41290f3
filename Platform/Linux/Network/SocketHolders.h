#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace platform {

/// Tells which processes hold which sockets. One thread at a time. A process that is gone is data,
/// not an error.
class SocketHolders {
 public:
  enum class Search { complete, stopped, refused };

  virtual ~SocketHolders() = default;

  /// Replaces `pids` with the identifiers of all processes, in any order.
  virtual void listPids(std::vector<std::int32_t>& pids) = 0;

  /// A number that changes whenever the process runs. Absent when the process is gone or the system
  /// does not tell the number.
  virtual std::optional<std::uint64_t> cpuTime(std::int32_t pid) = 0;

  /// A number that differs between a process and a later one with the same identifier. Absent when
  /// the process has ended.
  virtual std::optional<std::uint64_t> startTime(std::int32_t pid) = 0;

  /// Calls `visit` with the inode of each socket that the process holds open, until it returns
  /// false. Refused when the process may not be looked into or is gone.
  virtual Search visitSockets(std::int32_t pid,
                              const std::function<bool(std::uint32_t inode)>& visit) = 0;
};

}  // namespace platform
