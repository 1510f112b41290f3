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

/// What a process is to the program that counts.
enum class Relation : std::uint8_t {
  stranger,
  self,
  tool,  ///< The program started it, or another of its tools did: its work is nobody's.
};

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
  Relation relation = Relation::stranger;
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

  /// Whether its usage was dealt with when it was read. Nobody counts a process without a name;
  /// a tool has none on purpose.
  [[nodiscard]] bool isSeen() const { return account != 0 || relation == Relation::tool; }
  /// The part of what its reaper is charged that was dealt with already.
  [[nodiscard]] std::uint64_t seenTime() const { return isSeen() ? ownTime + reapedTime : 0; }
};

/// The process with that identifier, among some that are ascending by it; null when there is none.
inline FollowedProcess* findProcess(std::vector<FollowedProcess>& processes, std::int32_t pid) {
  const auto found = std::ranges::lower_bound(processes, pid, {}, &FollowedProcess::pid);
  return found == processes.end() || found->pid != pid ? nullptr : &*found;
}

}  // namespace tidewell
