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
  tool,  ///< The program, or one of its tools, started it. Its work is counted for nobody.
};

/// A process as it was last read, and what is counted for it. Times are in the table's units.
struct FollowedProcess {
  static constexpr std::int32_t kUnknownGroup = -1;

  std::int32_t pid = 0;
  std::int32_t parent = 0;
  std::uint64_t startTime = 0;  ///< 0 for a hidden process if the table cannot tell it.
  std::uint64_t ownTime = 0;
  std::uint64_t reapedTime = 0;
  std::uint64_t disk = 0;  ///< Read and written.
  std::uint32_t programVersion = 0;
  std::int32_t account = 0;  ///< The account of its name and application; 0 without a name.
  std::int32_t group = kUnknownGroup;  ///< As `ProcessGroups` has it, when it last ran.
  std::uint64_t passTime = 0;          ///< What this pass counted for it.
  std::uint64_t passReaped = 0;        ///< The part that is due to a reaper's charge.
  Relation relation = Relation::stranger;
  bool ended = false;
  bool unread = false;      ///< It is there, but this pass could not read it.
  bool hidden = false;      ///< It was never read. It is the parent of a process that was.
  bool reapedSome = false;  ///< It was charged for reaped children on this pass.
  Usage counted;            ///< What is counted under its present name.
  ChildrenCharge reaped;
  SharedText path;
  std::shared_ptr<const RunningApplication> application;  ///< Null for none.
  /// A new number for each name that any process takes; 0 before the first name.
  std::uint32_t nameVersion = 0;

  /// Whether its usage was dealt with when it was read. The usage of a process without a name was
  /// not. A tool has no name on purpose.
  [[nodiscard]] bool isSeen() const { return account != 0 || relation == Relation::tool; }
  /// The time that was dealt with already. Its reaper is charged for this time as well.
  [[nodiscard]] std::uint64_t seenTime() const { return isSeen() ? ownTime + reapedTime : 0; }
};

/// The process with that identifier, or null. `processes` must be ascending by identifier.
inline FollowedProcess* findProcess(std::vector<FollowedProcess>& processes, std::int32_t pid) {
  const auto found = std::ranges::lower_bound(processes, pid, {}, &FollowedProcess::pid);
  return found == processes.end() || found->pid != pid ? nullptr : &*found;
}

}  // namespace tidewell
