#pragma once

#include "Platform/Linux/Processes/ProcessTracker.h"
#include "Tidewell/Ports/ProcessTable.h"

namespace platform {

/// The process table as `/proc` and the kernel's CPU clocks tell it. All CPU time is reported as
/// user time: the clocks do not tell the two apart. `tracker` must outlive it.
class LinuxProcessTable : public tidewell::ProcessTable {
 public:
  explicit LinuxProcessTable(ProcessTracker& tracker);

  int listPids(std::span<std::int32_t> buffer) override;
  bool resourceUsage(std::int32_t pid, tidewell::ResourceUsage& usage) override;
  int path(std::int32_t pid, std::span<char, kPathCapacity> buffer) override;
  std::int32_t parent(std::int32_t pid) override;
  bool isAlive(std::int32_t pid) override;
  /// The kernel adds a child's I/O to that of whoever reaps it.
  bool diskIncludesReaped() override { return true; }
  tidewell::Timebase timebase() override;

 private:
  ProcessTracker& tracker_;
};

}  // namespace platform
