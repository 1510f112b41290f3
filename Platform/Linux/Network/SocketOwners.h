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

/// The process that a socket belongs to; `pid` is 0 while nobody is known to.
struct SocketOwner {
  std::int32_t pid = 0;
  std::uint64_t startTime = 0;
};

/// Finds out whose a socket is, and remembers it for as long as socket and process live.
///
/// A socket that several processes share belongs to whichever is found first; once that one has
/// ended, to another. A socket that a process has closed stays its own, also when the process has
/// ended since. Sockets that no readable process holds are looked for again once at the next call
/// and then every 30 seconds. Memory is bounded by the sockets and processes there are. One thread
/// at a time; `holders` and `processes` must outlive it.
class SocketOwners {
 public:
  using Time = tidewell::Moment;

  /// With `onlyUid`, sockets of other users are never looked for: who may read only their own
  /// processes finds nothing there.
  SocketOwners(SocketHolders& holders, OwnerProcesses& processes,
               std::optional<std::uint32_t> onlyUid);

  /// The owners of `sockets`, in the same order; those of sockets that no process holds any more
  /// may have ended. `sockets` is ascending by cookie, each once. Valid until the next call.
  std::span<const SocketOwner> find(std::span<const SocketRecord> sockets, Coverage coverage,
                                    Time now);

  /// Whose a socket was when it was last listed; nobody's if it was not.
  [[nodiscard]] SocketOwner lastOwner(std::uint64_t cookie);

 private:
  struct Known {
    SocketOwner owner;
    Time nextSearch = Time::min();
    bool wasMissed = false;
  };
  /// A socket without an owner, by the number that the processes' links show.
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
  std::size_t dueCount_ = 0;    ///< Of those wanted, the due ones that are not found yet.
  std::vector<std::int32_t> candidates_;
  std::vector<SocketOwner> owners_;
};

}  // namespace platform
