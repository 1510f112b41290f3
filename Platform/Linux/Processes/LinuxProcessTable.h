#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Platform/Linux/Processes/ProcessTracker.h"
#include "Tidewell/Ports/ProcessTable.h"

namespace platform {

/// The process table as `/proc` and the kernel's CPU clocks tell it; a snapshot is a pass of the
/// tracker, which knows the applications as well. Ascending by pid. All CPU time is reported as
/// user time: the clocks do not tell the two apart. `tracker` must outlive it.
class LinuxProcessTable : public tidewell::ProcessTable {
 public:
  explicit LinuxProcessTable(ProcessTracker& tracker);

  tidewell::ProcessSnapshot snapshot() override;
  bool resourceUsage(std::int32_t pid, tidewell::ResourceUsage& usage) override;
  std::string_view path(std::int32_t pid) override;
  std::int32_t parent(std::int32_t pid) override;
  bool isAlive(std::int32_t pid) override;
  /// The kernel adds a child's I/O to that of whoever reaps it.
  bool diskIncludesReaped() override { return true; }
  tidewell::Timebase timebase() override;

 private:
  ProcessTracker& tracker_;
  std::vector<std::int32_t> pids_;
  std::vector<std::shared_ptr<const tidewell::RunningApplication>> applications_;
};

}  // namespace platform
