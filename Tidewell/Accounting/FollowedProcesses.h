#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "Tidewell/Accounting/FollowedProcess.h"
#include "Tidewell/Accounting/UsageByName.h"
#include "Tidewell/Ports/ProcessTable.h"

namespace tidewell {

/// The processes of a table, followed from pass to pass, and those that ended on the latest pass.
///
/// Some rules find out who has ended and who is charged for it. What is lost without each:
///
/// * A parent that cannot be read is followed as well, as a hidden process. It is charged for
///   children that had been seen, and this charge comes to light with whoever reaps the parent. If
///   no hidden process is followed, twice the work of commands below a program of another user is
///   counted.
/// * A process that is there but cannot be read keeps what it had. If it is taken for ended, 1.6
///   times the work of commands below two such programs is counted.
/// * When a parent ends, the heir of its children is asked for. Otherwise 1.9 times the work of
///   commands that outlive their shell is counted.
/// * A child may be reaped after it was read and before its parent was. Its usage is in both
///   readings then, so the child, and its own children likewise, are taken for ended. The reading
///   takes about 1 ms of a pass of 2 s, so one end of 2,000 falls into it. All that had been seen
///   of such a child would be counted twice.
///
/// Main thread only; the arguments must outlive it.
class FollowedProcesses {
 public:
  using Application = std::shared_ptr<const RunningApplication>;

  /// `self` is the process that counts; its children are its tools. 0 for none.
  FollowedProcesses(ProcessTable& table, UsageByName& usage, std::int32_t self);

  /// Reads all of `pids` and finds out which processes have ended. `applications` are ascending by
  /// process. Except on the first pass, no new process is credited with more than `most`.
  void read(std::span<const std::int32_t> pids, std::span<const Application> applications,
            const Usage& most);

  /// Finds out who has inherited the children of the processes that ended. Call this after the
  /// claims, which need the parents that the ended processes had while they lived.
  void updateParents();

  /// Forgets the processes that ended.
  void forgetGone() { gone_.clear(); }

  /// Both lists are ascending by identifier. The caller may change their entries.
  [[nodiscard]] std::vector<FollowedProcess>& living() { return living_; }
  [[nodiscard]] std::vector<FollowedProcess>& gone() { return gone_; }
  /// All processes that live or wait to be reaped, in the order of the table, also those that
  /// cannot be read. The caller may add to the list.
  [[nodiscard]] std::vector<std::int32_t>& order() { return order_; }

  /// The living process with that identifier, or null. Asking in ascending order costs least.
  FollowedProcess* find(std::int32_t pid);

 private:
  void readAll(std::span<const std::int32_t> ascending, std::span<const Application> applications);
  void readOne(std::int32_t pid, FollowedProcess* known, const Application& application);
  void begin(FollowedProcess& process, const ResourceUsage& usage, const Application& application);
  [[nodiscard]] Relation relationOf(const FollowedProcess& process);
  void noteUnread(FollowedProcess& process, const ResourceUsage& usage);
  void miss(FollowedProcess& process);
  void findReapedMeanwhile();
  std::vector<std::int32_t> endChildrenOf(const std::vector<std::int32_t>& parents);
  void removeEnded();
  void followHiddenParents();
  void followHidden(std::int32_t pid);

  ProcessTable& table_;
  UsageByName& usage_;
  std::int32_t self_;
  Usage most_;
  bool isPrimed_ = false;                 ///< Whether a pass was made before.
  std::vector<std::int32_t> order_;       ///< As the table lists them.
  std::vector<FollowedProcess> living_;   ///< Ascending by pid.
  std::vector<FollowedProcess> born_;     ///< New on this pass, ascending.
  std::vector<FollowedProcess> gone_;     ///< Ended on this pass, ascending.
  std::vector<std::int32_t> newParents_;  ///< The parents of processes that were born or inherited.
  std::size_t cursor_ = 0;                ///< Where the next `find` is likely to hit.
};

}  // namespace tidewell
