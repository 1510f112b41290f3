#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Platform/Linux/Processes/ProcessTracker.h"
#include "Tidewell/Ports/ProcessTable.h"

namespace platform {

/// Gives the core the processes and applications that `ProcessTracker` follows. A snapshot makes
/// one pass of the tracker, and lists the processes in ascending order of pid. All CPU time is
/// reported as user time, because the kernel's CPU clocks do not tell user time from system time.
/// Main thread only; `tracker` must outlive the table.
class LinuxProcessTable : public tidewell::ProcessTable {
 public:
  explicit LinuxProcessTable(ProcessTracker& tracker);

  tidewell::ProcessSnapshot snapshot() override;
  bool resourceUsage(std::int32_t pid, tidewell::ResourceUsage& usage) override;
  std::string_view path(std::int32_t pid) override;
  std::int32_t parent(std::int32_t pid) override;
  bool isAlive(std::int32_t pid) override;
  /// The kernel adds a child's I/O to the I/O of the process that reaps the child.
  bool diskIncludesReaped() override { return true; }
  tidewell::Timebase timebase() override;

 private:
  ProcessTracker& tracker_;
  std::vector<std::int32_t> pids_;
  std::vector<std::shared_ptr<const tidewell::RunningApplication>> applications_;
};

}  // namespace platform
