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
  std::optional<std::uint64_t> cpuTime;  ///< As of the last look.
};

/// The living processes among those that ever owned a socket.
///
/// Holds as many entries as there are such processes and no dead ones after `refresh`. A process
/// is looked at again only if it ran: one that did not run is the one it was.
/// One thread at a time; `holders` must outlive it.
class OwnerProcesses {
 public:
  explicit OwnerProcesses(SocketHolders& holders) : holders_(holders) {}

  /// Forgets those that have ended, also where another process has the identifier now.
  void refresh();

  /// The process that has this identifier now, added where need be; null when there is none.
  /// Valid until the next call of `refresh` or `add`.
  const OwnerProcess* add(std::int32_t pid);

  [[nodiscard]] bool contains(std::int32_t pid) const { return find(pid) != nullptr; }
  [[nodiscard]] bool isAlive(std::int32_t pid, std::uint64_t startTime) const;

  /// Ascending by identifier.
  [[nodiscard]] std::span<const OwnerProcess> all() const { return processes_; }

 private:
  bool stillLives(OwnerProcess& process);
  [[nodiscard]] const OwnerProcess* find(std::int32_t pid) const;

  SocketHolders& holders_;
  std::vector<OwnerProcess> processes_;
};

}  // namespace platform
