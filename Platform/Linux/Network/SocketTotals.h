#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Platform/Linux/Network/OwnerProcesses.h"
#include "Platform/Linux/Network/SocketOwners.h"
#include "Platform/Linux/Network/SocketRecord.h"
#include "Platform/Linux/Network/SocketTable.h"

namespace platform {

/// Adds up what each process's sockets have carried.
///
/// A process's totals never go backwards while it lives: a closed socket's bytes stay counted, and
/// bytes of a socket that goes over to another process stay with the one that they were counted
/// for. What a socket carries after it was last listed, or all of it where it opens and closes
/// between two listings, is not seen. Memory is bounded by the living sockets and processes.
class SocketTotals {
 public:
  /// Neither counter ever exceeds half of what 64 bits hold, so that their sum always fits.
  struct Total {
    std::int32_t pid = 0;
    std::uint64_t startTime = 0;
    std::uint64_t bytesReceived = 0;
    std::uint64_t bytesSent = 0;
  };

  /// Counts what each socket carried since it was last counted for its owner. `sockets` is
  /// ascending by cookie, each once; `owners` has the owner of each. An owner of a known
  /// identifier and another start time begins at zero.
  void update(std::span<const SocketRecord> sockets, std::span<const SocketOwner> owners,
              Coverage coverage);

  /// Forgets all processes but `living`, which is ascending by identifier.
  void keepOnly(std::span<const OwnerProcess> living);

  /// Ascending by identifier; also those of processes that have carried nothing yet.
  [[nodiscard]] std::span<const Total> all() const { return totals_; }

  /// How many sockets are remembered.
  [[nodiscard]] std::size_t socketCount() const { return counted_.size(); }

 private:
  struct Counted {
    std::uint64_t bytesReceived = 0;
    std::uint64_t bytesSent = 0;
  };
  Total& totalOf(const SocketOwner& owner);

  SocketTable<Counted> counted_;
  std::vector<Total> totals_;
};

}  // namespace platform
