#pragma once

#include <cstdint>
#include <memory>

#include "Tidewell/Accounting/AccountBook.h"
#include "Tidewell/Accounting/AccountDirectory.h"
#include "Tidewell/Accounting/FollowedProcess.h"
#include "Tidewell/Ports/ProcessTable.h"
#include "Tidewell/SharedText.h"

namespace tidewell {

/// Decides under which name the usage of a process is counted, when its counters are read.
///
/// * What a process used before it took another name by an exec goes into the account of the former
///   name. Otherwise the new name would begin with a jump.
/// * What a process had used when it ended goes into the account of its last name.
/// * A process that has ended has no path any more, but keeps its last name until it is reaped.
///   Otherwise the worst of the 200 random trees of the tests counts 32 % too much.
/// * Nobody sees a process that never had a name. Its usage is left in the charge of its reaper.
///   Otherwise the worst tree counts 2.8 % too little.
/// * What macOS charges twice for a child counts once. Otherwise 30 % too much is counted in the
///   worst tree.
/// * If a counter goes backwards, only what is beyond its highest value counts. No kernel is known
///   to do this. But if one did, all of the counter would be counted once more.
///
/// The object keeps no counters itself: they are in `FollowedProcess` and in the accounts. Main
/// thread only; the arguments must outlive the object.
class UsageByName {
 public:
  using Application = std::shared_ptr<const RunningApplication>;

  /// `directory` is told the account of every process.
  UsageByName(ProcessTable& table, AccountBook& accounts, AccountDirectory& directory);

  /// Begins with a process that was there before the first pass. All that it had used is counted.
  void beginWithAll(FollowedProcess& process, const ResourceUsage& usage,
                    const Application& application);

  /// Begins with a process that is read for the first time on a later pass. A new process used all
  /// of it since the last pass. Another may be old, and could not be read before. So what is beyond
  /// `most` is dropped.
  void beginWithMost(FollowedProcess& process, const ResourceUsage& usage,
                     const Application& application, const Usage& most);

  /// Counts what the process has used since the last reading.
  void count(FollowedProcess& process, const ResourceUsage& usage, const Application& application);

  /// Leaves in its account what was counted for a process that ended.
  void leaveInAccount(const FollowedProcess& process);

 private:
  void begin(FollowedProcess& process, const ResourceUsage& usage, const Application& application);
  std::uint64_t chargedOnce(std::int32_t pid, std::uint64_t reapedTime);
  void followName(FollowedProcess& process, std::uint32_t version, const Application& application);

  ProcessTable& table_;
  AccountBook& accounts_;
  AccountDirectory& directory_;
  SharedTexts paths_;
  std::uint32_t lastNameVersion_ = 0;
};

}  // namespace tidewell
