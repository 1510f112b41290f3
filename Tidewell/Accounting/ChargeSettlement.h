#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Tidewell/Accounting/FollowedProcess.h"

namespace tidewell {

/// Sorts out, on one pass over the processes, what those who reaped were charged for: what had been
/// seen of the ended ones is counted elsewhere, the rest is still to be counted.
///
/// Works on the lists that it is made with, both ascending by identifier, which must outlive it and
/// keep their places between `claim` and the last `settle`.
class ChargeSettlement {
 public:
  struct Terms {
    Usage most;                   ///< What can have been used since the last pass.
    std::uint64_t tolerance = 0;  ///< How much reaped time may be rounded.
    bool includesDisk = false;    ///< Whether disk bytes are charged like time.
  };

  /// `gone` are the processes that ended on this pass.
  ChargeSettlement(std::vector<FollowedProcess>& living, std::vector<FollowedProcess>& gone,
                   Terms terms);

  /// Takes what had been seen of the ended processes out of what their reapers are charged.
  void claim();

  /// Counts what `reaper`, of either list, was charged beyond all that had been seen: with the
  /// children that were seen, at most as much again as of each, with itself the rest.
  void settle(FollowedProcess& reaper);

 private:
  /// What had been seen of an ended process was found in the charge of another.
  struct Claim {
    std::int32_t reaper = 0;
    std::size_t ended = 0;  ///< In `gone_`.
  };

  void note(const FollowedProcess& ended, const FollowedProcess* reaper);
  FollowedProcess* livingParent(const FollowedProcess& ended);
  FollowedProcess* claimFromAncestors(std::int32_t ancestor, const Usage& seen);
  [[nodiscard]] Usage seenOf(const FollowedProcess& process) const;

  std::vector<FollowedProcess>& living_;
  std::vector<FollowedProcess>& gone_;
  Terms terms_;
  std::vector<Claim> claims_;  ///< By reaper, once all are made.
};

}  // namespace tidewell
