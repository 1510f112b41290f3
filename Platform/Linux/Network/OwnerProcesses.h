#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Platform/Linux/Network/SocketHolders.h"

namespace platform {

/// A process that owns or has owned a socket.
struct OwnerProcess {
  std::int32_t pid = 0;
  std::uint64_t startTime = 0;
  std::optional<std::uint64_t> cpuTime;  ///< At the last look.
};

/// The processes that have owned a socket and still live.
///
/// After `refresh` it holds only living processes. `refresh` looks closer at a process only if it
/// ran, because a process that did not run is still the same. One thread at a time; `holders` must
/// outlive it.
class OwnerProcesses {
 public:
  explicit OwnerProcesses(SocketHolders& holders) : holders_(holders) {}

  /// Forgets the processes that have ended, even if another process has the identifier now.
  void refresh();

  /// The process that has this identifier now, which is added if it is missing; null when there is
  /// no such process. Valid until the next call of `refresh` or `add`.
  const OwnerProcess* add(std::int32_t pid);

  [[nodiscard]] bool contains(std::int32_t pid) const { return find(pid) != nullptr; }
  [[nodiscard]] bool isAlive(std::int32_t pid, std::uint64_t startTime) const;

  /// In ascending order of the identifier.
  [[nodiscard]] std::span<const OwnerProcess> all() const { return processes_; }

 private:
  bool stillLives(OwnerProcess& process);
  [[nodiscard]] const OwnerProcess* find(std::int32_t pid) const;

  SocketHolders& holders_;
  std::vector<OwnerProcess> processes_;
};

}  // namespace platform
