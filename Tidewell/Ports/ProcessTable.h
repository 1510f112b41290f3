#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

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

/// The kernel's table of processes: who is alive, what each has used, and where its program lies.
///
/// Carries raw facts only; names and rates are made above it. Used from the main thread alone.
/// A process that vanishes between two calls is data, not an error: the calls about it just fail.
class ProcessTable {
 public:
  static constexpr std::size_t kPathCapacity = 4096;

  virtual ~ProcessTable() = default;

  /// With an empty `buffer`: the number of bytes that a list of all live processes needs now.
  /// Otherwise fills `buffer` in the kernel's order and returns the number of bytes written, four
  /// per identifier; processes that do not fit are left out. Less than 1 means failure.
  virtual int listPids(std::span<std::int32_t> buffer) = 0;

  /// Fills `usage`. False when the process is gone or may not be read; of one that is there, its
  /// start time may be told even so, and is 0 otherwise.
  virtual bool resourceUsage(std::int32_t pid, ResourceUsage& usage) = 0;

  /// Writes the NUL-terminated path of the process's program and returns its length in bytes
  /// without the NUL, or a number below 1 when it cannot be told. The path is valid UTF-8.
  virtual int path(std::int32_t pid, std::span<char, kPathCapacity> buffer) = 0;

  /// The process that reaps it when it ends, as far as is known now; 0 when that cannot be told.
  virtual std::int32_t parent([[maybe_unused]] std::int32_t pid) { return 0; }

  /// Whether the process exists at this very moment. One that has ended does until it is reaped.
  virtual bool isAlive([[maybe_unused]] std::int32_t pid) { return true; }

  /// Whether a process's disk bytes contain those of the children that it has reaped. Constant.
  virtual bool diskIncludesReaped() { return false; }

  /// Constant for the life of the table.
  virtual Timebase timebase() = 0;
};

}  // namespace tidewell
