#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tidewell {

/// Cumulative counters of one process since it started.
///
/// The two times are in the table's own units; `ProcessTable::timebase` tells how many nanoseconds
/// a unit is. On macOS these are Mach absolute-time units, on Linux nanoseconds or clock ticks.
struct ResourceUsage {
  std::uint64_t userTime = 0;
  std::uint64_t systemTime = 0;
  std::uint64_t diskBytesRead = 0;
  std::uint64_t diskBytesWritten = 0;
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

  /// Fills `usage`. False when the process is gone or may not be read.
  virtual bool resourceUsage(std::int32_t pid, ResourceUsage& usage) = 0;

  /// Writes the NUL-terminated path of the process's program and returns its length in bytes
  /// without the NUL, or a number below 1 when it cannot be told. The path is valid UTF-8.
  virtual int path(std::int32_t pid, std::span<char, kPathCapacity> buffer) = 0;

  /// Constant for the life of the table.
  virtual Timebase timebase() = 0;
};

}  // namespace tidewell
