#pragma once

#include <cstdint>
#include <vector>

#include "Platform/Linux/Network/SocketHolders.h"

namespace platform {

/// Which processes may have come by a socket since they were last searched: those that ran.
///
/// A search comes after the listing whose sockets it looks for, so what a process opened between
/// the two is missed by the search and in no later one's reach if it never runs again. Therefore a
/// process is searched until it has been found at rest by a search. Holds one entry for each
/// living process. One thread at a time; `holders` must outlive it.
class SearchHistory {
 public:
  explicit SearchHistory(SocketHolders& holders) : holders_(holders) {}

  /// Lists all processes anew and replaces `candidates` with those worth a search, the
  /// highest identifier first: of a parent and a child that share a socket, the child uses it.
  void findCandidates(std::vector<std::int32_t>& candidates);

  /// Says that `pid`, of the last list, was searched to the end or refused.
  void wasSearched(std::int32_t pid);

 private:
  struct Entry {
    std::int32_t pid = 0;
    bool searchedAtRest = false;
    std::uint64_t cpuTimeWhenSearched = 0;  ///< 0 where it was not told, as the other.
    std::uint64_t cpuTimeNow = 0;
  };
  [[nodiscard]] static bool isCandidate(const Entry& entry);

  SocketHolders& holders_;
  std::vector<Entry> entries_;  ///< Ascending by identifier.
  std::vector<std::int32_t> pids_;
};

}  // namespace platform
