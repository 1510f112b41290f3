#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Platform/Linux/Network/OwnerProcesses.h"
#include "Platform/Linux/Network/SearchHistory.h"
#include "Platform/Linux/Network/SocketHolders.h"
#include "Platform/Linux/Network/SocketRecord.h"
#include "Platform/Linux/Network/SocketTable.h"
#include "Tidewell/Ports/Clock.h"

namespace platform {

/// The process that a socket belongs to. `pid` is 0 while no such process is known.
struct SocketOwner {
  std::int32_t pid = 0;
  std::uint64_t startTime = 0;
};

/// Finds out which process owns a socket, and remembers it as long as the socket and the process
/// live.
///
/// When several processes share a socket, the first one that is found owns it, and another one
/// after that process has ended. A socket that a process has closed stays with the process, even
/// after the process has ended. Sockets that no readable process holds are looked for again at the
/// next call, and then every 30 seconds. The memory is limited by the number of sockets and
/// processes. One thread at a time; `holders` and `processes` must outlive it.
class SocketOwners {
 public:
  using Time = tidewell::Moment;

  /// With `onlyUid`, sockets of other users are never looked for. Set it for a user who may read
  /// only the user's own processes and would find nothing.
  SocketOwners(SocketHolders& holders, OwnerProcesses& processes,
               std::optional<std::uint32_t> onlyUid);

  /// The owners of `sockets`, in the same order. An owner may have ended if no process holds its
  /// socket any more. `sockets` has ascending cookies, each once. The result is valid until the
  /// next call.
  std::span<const SocketOwner> find(std::span<const SocketRecord> sockets, Coverage coverage,
                                    Time now);

  /// The owner of a socket when the socket was last listed; nobody for a socket that was never
  /// listed.
  [[nodiscard]] SocketOwner lastOwner(std::uint64_t cookie);

 private:
  struct Known {
    SocketOwner owner;
    Time nextSearch = Time::min();
    bool wasMissed = false;
  };
  /// A socket without an owner. The links of processes show its inode.
  struct Wanted {
    std::uint32_t inode = 0;
    bool isDue = false;
    bool isFound = false;
    Known* socket = nullptr;
  };

  void collectWanted(std::span<const SocketRecord> sockets, Time now);
  [[nodiscard]] bool mayBeFound(const SocketRecord& socket) const;
  void forgetDeadOwner(const SocketRecord& record, Known& socket) const;
  void search();
  void searchCandidates(bool owners);
  void searchProcess(std::int32_t pid);
  void assign(std::uint32_t inode, std::int32_t pid);
  void postponeMissing(Time now);

  SocketHolders& holders_;
  OwnerProcesses& processes_;
  const std::optional<std::uint32_t> onlyUid_;
  SearchHistory history_;
  SocketTable<Known> known_;
  std::vector<Wanted> wanted_;  ///< Ascending by inode.
  std::size_t dueCount_ = 0;    ///< How many of `wanted_` are due and not found yet.
  std::vector<std::int32_t> candidates_;
  std::vector<SocketOwner> owners_;
};

}  // namespace platform
