#pragma once

#include "Platform/Linux/Processes/ProcessTracker.h"
#include "Tidewell/Ports/ProcessGroups.h"

namespace platform {

/// The control groups of the processes that `ProcessTracker` follows. Main thread only; `tracker`
/// must outlive it.
class LinuxProcessGroups : public tidewell::ProcessGroups {
 public:
  explicit LinuxProcessGroups(ProcessTracker& tracker) : tracker_(tracker) {}

  std::int32_t groupOf(std::int32_t pid) override {
    const TrackedProcess* process = tracker_.find(pid);
    return process ? process->group : 0;
  }
  std::int32_t readGroupOf(std::int32_t pid) override { return tracker_.readGroup(pid); }
  std::optional<std::uint64_t> timeOf(std::int32_t group) override {
    return tracker_.groupTime(group);
  }
  bool hasOnlyKnownMembers(std::int32_t group) override {
    return tracker_.hasOnlyKnownMembers(group);
  }
  bool mayHaveUnseen() override { return tracker_.hadStrangers(); }

 private:
  ProcessTracker& tracker_;
};

}  // namespace platform
