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

/// The processes of a table, followed from pass to pass, and those that ended on the latest.
///
/// Beside those that can be read it follows their parents that cannot: what these are charged for
/// children that were seen comes to light with whoever reaps them, and must be known by then.
///
/// Main thread only; the arguments must outlive it.
class FollowedProcesses {
 public:
  using Application = std::shared_ptr<const RunningApplication>;

  /// `self` is the process that counts, whose children are its tools; 0 for none.
  FollowedProcesses(ProcessTable& table, UsageByName& usage, std::int32_t self);

  /// Reads all of `pids` and finds out which processes have ended. `applications` are ascending by
  /// process. What is new is credited with no more than `most`, except on the first pass.
  void read(std::span<const std::int32_t> pids, std::span<const Application> applications,
            const Usage& most);

  /// Looks who inherited the children of those that ended. After the claims, which go by who was
  /// whose child when they still lived.
  void updateParents();

  /// Forgets those that ended.
  void forgetGone() { gone_.clear(); }

  /// Ascending by identifier, as is `gone`; the lists are the caller's to change the entries of.
  [[nodiscard]] std::vector<FollowedProcess>& living() { return living_; }
  [[nodiscard]] std::vector<FollowedProcess>& gone() { return gone_; }
  /// All that live or wait to be reaped, as the table lists them; also those that cannot be read.
  /// The caller may add to it.
  [[nodiscard]] std::vector<std::int32_t>& order() { return order_; }

  /// The living one with that identifier, or null. Cheapest when asked in ascending order.
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
  std::vector<std::int32_t> newParents_;  ///< Of those that were born or inherited.
  std::size_t cursor_ = 0;                ///< Where the next `find` is likely to hit.
};

}  // namespace tidewell
