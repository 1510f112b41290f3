#pragma once

#include "Tidewell/Ports/ProcessTable.h"

namespace platform {

/// The process table through libproc. Times are in Mach absolute-time units.
class LibprocProcessTable final : public tidewell::ProcessTable {
 public:
  int listPids(std::span<std::int32_t> buffer) override;
  bool resourceUsage(std::int32_t pid, tidewell::ResourceUsage& usage) override;
  int path(std::int32_t pid, std::span<char, kPathCapacity> buffer) override;
  std::int32_t parent(std::int32_t pid) override;
  /// Also of a process that waits to be reaped, of which nothing else can be read any more.
  bool isAlive(std::int32_t pid) override;
  tidewell::Timebase timebase() override;
};

}  // namespace platform
