#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/MacOS/Processes/KernelSnapshot.h"
#include "Tidewell/Ports/ProcessTable.h"

namespace platform {

/// The process table through libproc. Times are in Mach absolute-time units.
///
/// How this kernel treats a process that waits to be reaped, as its published source says: it is
/// listed, after all others; its usage can be read, as it was at its end; its parent is told to
/// who asks for such ones too; its path is told to nobody.
class LibprocProcessTable final : public tidewell::ProcessTable {
 public:
  /// `listApplications` gives the running applications of each snapshot.
  explicit LibprocProcessTable(std::function<KernelSnapshot::Applications()> listApplications)
      : snapshot_({std::move(listApplications), listPids}) {}

  /// As `KernelSnapshot::Calls` wants it.
  static int listPids(std::span<std::int32_t> buffer);

  tidewell::ProcessSnapshot snapshot() override { return snapshot_.take(); }
  bool resourceUsage(std::int32_t pid, tidewell::ResourceUsage& usage) override;
  std::string_view path(std::int32_t pid) override;
  std::int32_t parent(std::int32_t pid) override;
  bool isAlive(std::int32_t pid) override;
  /// True of one that ignores the end of its children: the kernel charges it when such a child
  /// ends, and once more when it reaps the child in its place.
  bool isChargedTwice(std::int32_t pid) override;
  tidewell::Timebase timebase() override;

 private:
  static constexpr std::size_t kPathCapacity = 4096;

  KernelSnapshot snapshot_;
  std::array<char, kPathCapacity> path_{};
  std::string cleanPath_;
};

}  // namespace platform
