#pragma once

#include <cstdint>
#include <optional>

namespace platform {

/// The kernel's CPU-time clock of any process: one system call, no descriptor, no permission.
///
/// It gates all other reading: while it stands still the process has not run, so nothing else
/// about it has changed either. Safe from any thread.
class CpuClock {
 public:
  virtual ~CpuClock() = default;

  /// Nanoseconds of CPU time of all threads of process `pid`, ended ones included. Absent when
  /// there is no such process; the identifier of a thread is none.
  virtual std::optional<std::uint64_t> nanoseconds(std::int32_t pid) = 0;

  /// Whether the kernel, or the sandbox around us, lets us read such clocks at all.
  virtual bool isAvailable() = 0;
};

/// The real one.
class KernelCpuClock : public CpuClock {
 public:
  std::optional<std::uint64_t> nanoseconds(std::int32_t pid) override;
  bool isAvailable() override;
};

}  // namespace platform
