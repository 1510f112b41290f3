#pragma once

#include <cstdint>
#include <optional>

namespace tidewell {

/// Groups of processes of which the system knows what they have used as a whole, with the processes
/// that have ended. The answers are as of the last snapshot of the process table, or newer. Main
/// thread only.
class ProcessGroups {
 public:
  virtual ~ProcessGroups() = default;

  /// The group of a process, as it was read last; 0 for none. A group keeps its number.
  virtual std::int32_t groupOf(std::int32_t pid) = 0;

  /// Reads the group of a process anew.
  virtual std::int32_t readGroupOf(std::int32_t pid) = 0;

  /// What the processes of the group have used since it was made, in the units of the table. Absent
  /// when it cannot be told.
  virtual std::optional<std::uint64_t> timeOf(std::int32_t group) = 0;

  /// Whether every process that is in the group now is one that the table can read, and had been
  /// found in this group, or was born since. If one had been found in another group, its group is
  /// read anew. This costs much more than `timeOf`.
  virtual bool hasOnlyKnownMembers(std::int32_t group) = 0;

  /// Whether a process may have come and gone between the last two snapshots.
  virtual bool mayHaveUnseen() = 0;
};

}  // namespace tidewell
