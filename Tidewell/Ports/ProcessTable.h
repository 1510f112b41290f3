#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "Tidewell/Ports/RunningApplications.h"

namespace tidewell {

/// Cumulative counters of one process since it started, and what tells it from other processes.
///
/// The times are in the table's own units; `ProcessTable::timebase` tells how many nanoseconds a
/// unit is. On macOS these are Mach absolute-time units, on Linux nanoseconds or clock ticks.
struct ResourceUsage {
  std::uint64_t userTime = 0;
  std::uint64_t systemTime = 0;
  /// If `ProcessTable::diskIncludesReaped`, these include the bytes of children that it has reaped.
  std::uint64_t diskBytesRead = 0;
  std::uint64_t diskBytesWritten = 0;
  /// User and system time of the children that it has reaped, and of the children that they have
  /// reaped. A table should read this after the list of processes: then it includes every reaped
  /// child that the list does not have any more.
  std::uint64_t reapedTime = 0;
  /// Tells a process from an earlier one with the same number; in any unit.
  std::uint64_t startTime = 0;
  /// Changes whenever the process's path or application may have changed; 0 if the table cannot
  /// tell.
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
  /// In any order. If several have the same process, the last one counts.
  std::span<const std::shared_ptr<const RunningApplication>> applications;
};

/// The kernel's table of processes: which are alive, what each has used, and where its program
/// lies.
///
/// The table carries raw facts only; names and rates are made above it. Main thread only. A process
/// that vanishes after the snapshot is no error: the calls about it just fail.
class ProcessTable {
 public:
  virtual ~ProcessTable() = default;

  /// Reads the whole system anew. The answers of the calls below are no older than this.
  virtual ProcessSnapshot snapshot() = 0;

  /// Fills `usage`. False when the process is gone or may not be read. If it is there, its start
  /// time may be told even then; otherwise the start time is 0.
  virtual bool resourceUsage(std::int32_t pid, ResourceUsage& usage) = 0;

  /// The path of the process's program, in valid UTF-8; empty when it cannot be told. Valid until
  /// the next call of `path` or `snapshot`.
  virtual std::string_view path(std::int32_t pid) = 0;

  /// The process that will reap `pid` when it ends, as far as is known now; 0 if the table cannot
  /// tell.
  virtual std::int32_t parent([[maybe_unused]] std::int32_t pid) { return 0; }

  /// Whether the process exists at this very moment. An ended process exists until it is reaped.
  virtual bool isAlive([[maybe_unused]] std::int32_t pid) { return true; }

  /// Whether the kernel charges the process twice for each child that ends, as far as is known now.
  /// macOS does this to a process that ignores the end of its children.
  virtual bool isChargedTwice([[maybe_unused]] std::int32_t pid) { return false; }

  /// Whether a process's disk bytes include those of the children that it has reaped. Constant.
  virtual bool diskIncludesReaped() { return false; }

  /// Constant for the life of the table.
  virtual Timebase timebase() = 0;
};

}  // namespace tidewell
