#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Tidewell/Accounting/FollowedProcess.h"

namespace tidewell {

/// Sorts out, on one pass, what processes were charged for the children that they reaped. What had
/// been seen of the ended children is counted elsewhere already. The rest is counted here.
///
/// The rules, and what is lost without each. The figures are of real commands, as in
/// `ConservedProcesses`, and of the 200 random trees of processes that the tests make.
///
/// * What had been seen is claimed, once, from the charge of a reaper. With no claims, 1.3 times
///   (for workers that nobody waits for) to 2.7 times (for `tar` into `gzip`) the work is counted.
/// * A living parent is the reaper of its child, so these claims come first. In any order, the
///   worst tree counts 27 % too much.
/// * If the parent has ended too, the charge has gone up the line of ancestors. The first of them
///   that has it is taken for the reaper. Without that, 1.7 times the work of a `make` that is
///   broken off is counted, because make, shell and compiler end together.
/// * An ancestor that has ended can have the charge only if it was read after it reaped. Without
///   that, 1.2 % too much is counted of a shell that runs short compilations.
/// * Children of a parent that could not be read are guessed last, because that parent most likely
///   has their charge. In any order, the worst tree with hidden processes counts 3.2 % too much
///   instead of 0.3 %.
/// * A child that had been seen gets at most as much again as was seen of it, for its last stretch.
///   With no last stretch, a loop of commands of three seconds is busy on 2 of 18 passes instead of
///   9. With no limit, a loop of short compilations is busy on none instead of 4, because its work
///   falls to another name on every pass.
///
/// Works on two lists, both ascending by identifier. The lists must outlive it, and their entries
/// must keep their places between `claim` and the last `settle`.
class ChargeSettlement {
 public:
  struct Terms {
    Usage most;                   ///< What can have been used since the last pass.
    std::uint64_t tolerance = 0;  ///< How much the kernel may cut off a reaped time.
    bool includesDisk = false;    ///< Whether disk bytes are charged like time.
  };

  /// `gone` are the processes that ended on this pass.
  ChargeSettlement(std::vector<FollowedProcess>& living, std::vector<FollowedProcess>& gone,
                   Terms terms);

  /// Finds the reaper of each process that ended, and takes what had been seen of the process out
  /// of the reaper's charge.
  void claim();

  /// Counts what `reaper`, which is in one of the lists, was charged beyond all that had been seen.
  /// Each child that had been seen gets its last stretch. The reaper gets the rest. The claims on a
  /// process that this pass could not read must wait, so do not call this for such a process:
  /// otherwise 1.6 times the work of commands is counted that a script of another user starts.
  void settle(FollowedProcess& reaper);

 private:
  /// The charge of `reaper` had what was seen of an ended process.
  struct Claim {
    std::int32_t reaper = 0;
    std::size_t ended = 0;  ///< Its place in `gone_`.
  };

  void note(const FollowedProcess& ended, const FollowedProcess* reaper);
  FollowedProcess* livingParent(const FollowedProcess& ended);
  FollowedProcess* claimFromAncestors(std::int32_t ancestor, const Usage& seen);
  [[nodiscard]] Usage seenOf(const FollowedProcess& process) const;

  std::vector<FollowedProcess>& living_;
  std::vector<FollowedProcess>& gone_;
  Terms terms_;
  std::vector<Claim> claims_;  ///< Ascending by reaper, once all are made.
};

}  // namespace tidewell
