#pragma once

#include <cstdint>
#include <optional>

namespace platform {

/// Reads the kernel's CPU-time clock of any process with one system call. It needs no descriptor
/// and no permission.
///
/// While the clock of a process stands still, the process has not run, so nothing else about it
/// needs to be read. Safe from any thread.
class CpuClock {
 public:
  virtual ~CpuClock() = default;

  /// The CPU time of all threads of process `pid`, including ended threads, in nanoseconds. Absent
  /// when there is no such process; the identifier of a thread is not one of a process.
  virtual std::optional<std::uint64_t> nanoseconds(std::int32_t pid) = 0;

  /// Whether the kernel, or a sandbox around this program, allows the reading of such clocks.
  virtual bool isAvailable() = 0;
};

/// Reads the clocks of the kernel.
class KernelCpuClock : public CpuClock {
 public:
  std::optional<std::uint64_t> nanoseconds(std::int32_t pid) override;
  bool isAvailable() override;
};

}  // namespace platform
