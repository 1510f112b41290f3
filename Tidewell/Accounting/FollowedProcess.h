#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "Tidewell/Accounting/AccountBook.h"
#include "Tidewell/Accounting/ChildrenCharge.h"
#include "Tidewell/Ports/RunningApplications.h"
#include "Tidewell/SharedText.h"

namespace tidewell {

/// A process as it was last read, and what is counted for it. Times are in the table's units.
struct FollowedProcess {
  std::int32_t pid = 0;
  std::int32_t parent = 0;
  std::uint64_t startTime = 0;  ///< 0 if it cannot be told, of a hidden one.
  std::uint64_t ownTime = 0;
  std::uint64_t reapedTime = 0;
  std::uint64_t disk = 0;  ///< Read and written.
  std::uint32_t programVersion = 0;
  std::int32_t account = 0;  ///< Of its name and application; 0 without a name.
  bool ended = false;
  bool unread = false;      ///< On this pass, although it is there.
  bool hidden = false;      ///< Was never read; is known as the parent of one that was.
  bool reapedSome = false;  ///< On this pass.
  Usage counted;            ///< Under its present name.
  ChildrenCharge reaped;
  SharedText path;
  std::shared_ptr<const RunningApplication> application;  ///< Null for none.
  /// Another one for each name that any process takes; 0 for one that has never had a name.
  std::uint32_t nameVersion = 0;

  /// The time that whoever reaps it is charged and that was counted already. A process without a
  /// name is seen by nobody.
  [[nodiscard]] std::uint64_t seenTime() const { return account == 0 ? 0 : ownTime + reapedTime; }
};

/// The process with that identifier, among some that are ascending by it; null when there is none.
inline FollowedProcess* findProcess(std::vector<FollowedProcess>& processes, std::int32_t pid) {
  const auto found = std::ranges::lower_bound(processes, pid, {}, &FollowedProcess::pid);
  return found == processes.end() || found->pid != pid ? nullptr : &*found;
}

}  // namespace tidewell
