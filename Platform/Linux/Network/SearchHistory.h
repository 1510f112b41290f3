#pragma once

#include <cstdint>
#include <vector>

#include "Platform/Linux/Network/SocketHolders.h"

namespace platform {

/// Knows which processes may have opened a socket since they were last searched: those that ran.
///
/// A search comes after the listing of the sockets that it looks for. It finds no socket that a
/// process opened between the two. If such a process never ran again, no later search would include
/// it. So each process is searched until it did not run between two searches. There is one entry
/// for each living process. One thread at a time; `holders` must outlive it.
class SearchHistory {
 public:
  explicit SearchHistory(SocketHolders& holders) : holders_(holders) {}

  /// Lists all processes anew and replaces `candidates` with those that are worth a search. The
  /// highest identifier comes first: when a parent and a child share a socket, the child uses it.
  void findCandidates(std::vector<std::int32_t>& candidates);

  /// Notes that `pid`, which the last list had, was searched to the end or refused.
  void wasSearched(std::int32_t pid);

 private:
  struct Entry {
    std::int32_t pid = 0;
    bool searchedAtRest = false;
    std::uint64_t cpuTimeWhenSearched = 0;  ///< 0 when it could not be read, as in the next line.
    std::uint64_t cpuTimeNow = 0;
  };
  [[nodiscard]] static bool isCandidate(const Entry& entry);

  SocketHolders& holders_;
  std::vector<Entry> entries_;  ///< Ascending by identifier.
  std::vector<std::int32_t> pids_;
};

}  // namespace platform
