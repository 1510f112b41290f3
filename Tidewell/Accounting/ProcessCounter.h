#pragma once

#include <cstdint>
#include <memory>

#include "Tidewell/Accounting/AccountBook.h"
#include "Tidewell/Accounting/AccountDirectory.h"
#include "Tidewell/Accounting/FollowedProcess.h"
#include "Tidewell/Ports/ProcessTable.h"
#include "Tidewell/SharedText.h"

namespace tidewell {

/// Turns the readings of a process's counters into what is counted for it, and under which name.
///
/// Keeps nothing of a process itself. Main thread only; the arguments must outlive it.
class ProcessCounter {
 public:
  using Application = std::shared_ptr<const RunningApplication>;

  /// `directory` is told of every process's account.
  ProcessCounter(ProcessTable& table, AccountBook& accounts, AccountDirectory& directory);

  /// Begins with a process that was there before anything was counted: what it had counts as is.
  void beginWithAll(FollowedProcess& process, const ResourceUsage& usage,
                    const Application& application);

  /// Begins with a process that is new: what it had was used since the last pass, as far as that is
  /// possible; beyond `most` it is not.
  void beginWithMost(FollowedProcess& process, const ResourceUsage& usage,
                     const Application& application, const Usage& most);

  /// Counts what has come since the last reading.
  void update(FollowedProcess& process, const ResourceUsage& usage, const Application& application);

  /// Leaves what was counted for a process that ended in its account.
  void close(const FollowedProcess& process);

 private:
  void begin(FollowedProcess& process, const ResourceUsage& usage, const Application& application);
  std::uint64_t chargedOnce(std::int32_t pid, std::uint64_t reapedTime);
  void readName(FollowedProcess& process, std::uint32_t version, const Application& application);

  ProcessTable& table_;
  AccountBook& accounts_;
  AccountDirectory& directory_;
  SharedTexts paths_;
  std::uint32_t lastNameVersion_ = 0;
};

}  // namespace tidewell
