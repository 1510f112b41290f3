#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "Tidewell/Ports/RunningApplications.h"

namespace tidewell {

/// Cumulative counters of one process since it started, and what tells it from others.
///
/// The times are in the table's own units; `ProcessTable::timebase` tells how many nanoseconds a
/// unit is. On macOS these are Mach absolute-time units, on Linux nanoseconds or clock ticks.
struct ResourceUsage {
  std::uint64_t userTime = 0;
  std::uint64_t systemTime = 0;
  /// Where `ProcessTable::diskIncludesReaped`, with those of the children that it has reaped.
  std::uint64_t diskBytesRead = 0;
  std::uint64_t diskBytesWritten = 0;
  /// User and system time of the children that it has reaped, and of theirs. Best read no earlier
  /// than the list of processes: a child that is missing there is in here then, if this process
  /// reaped it, and need not be waited for.
  std::uint64_t reapedTime = 0;
  /// Tells a process from an earlier one under the same number; in any unit.
  std::uint64_t startTime = 0;
  /// Changes whenever the process's path or application may have changed; 0 where that cannot be
  /// told.
  std::uint32_t programVersion = 0;
};

/// Nanoseconds per unit of `ResourceUsage` time, as the fraction `numer` / `denom`.
struct Timebase {
  std::uint64_t numer = 1;
  std::uint64_t denom = 1;
};

/// All processes and running applications at one moment. Valid until the next snapshot of the
/// table.
struct ProcessSnapshot {
  /// In the kernel's order. Empty when they cannot be listed.
  std::span<const std::int32_t> processes;
  /// In any order; of several with one process the last counts.
  std::span<const std::shared_ptr<const RunningApplication>> applications;
};

/// The kernel's table of processes: who is alive, what each has used, and where its program lies.
///
/// Carries raw facts only; names and rates are made above it. Used from the main thread alone.
/// A process that vanishes after the snapshot is data, not an error: the calls about it just fail.
class ProcessTable {
 public:
  virtual ~ProcessTable() = default;

  /// Looks at the whole system anew. What the calls below tell is no older than this.
  virtual ProcessSnapshot snapshot() = 0;

  /// Fills `usage`. False when the process is gone or may not be read; of one that is there, its
  /// start time may be told even so, and is 0 otherwise.
  virtual bool resourceUsage(std::int32_t pid, ResourceUsage& usage) = 0;

  /// The path of the process's program, in valid UTF-8; empty when it cannot be told. Valid until
  /// the next call of `path` or `snapshot`.
  virtual std::string_view path(std::int32_t pid) = 0;

  /// The process that reaps it when it ends, as far as is known now; 0 when that cannot be told.
  virtual std::int32_t parent([[maybe_unused]] std::int32_t pid) { return 0; }

  /// Whether the process exists at this very moment. One that has ended does until it is reaped.
  virtual bool isAlive([[maybe_unused]] std::int32_t pid) { return true; }

  /// Whether the process, as far as is known now, is charged twice for each child that ends: once
  /// would be right. On macOS so is one that ignores the end of its children.
  virtual bool isChargedTwice([[maybe_unused]] std::int32_t pid) { return false; }

  /// Whether a process's disk bytes contain those of the children that it has reaped. Constant.
  virtual bool diskIncludesReaped() { return false; }

  /// Constant for the life of the table.
  virtual Timebase timebase() = 0;
};

}  // namespace tidewell
