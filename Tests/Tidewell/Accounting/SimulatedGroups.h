#pragma once

#include <cstdint>
#include <map>
#include <optional>

#include "Tests/Tidewell/Accounting/SimulatedKernel.h"
#include "Tidewell/Ports/ProcessGroups.h"

namespace tidewell {

/// The groups of a simulated kernel's processes. Group 0 is none.
class SimulatedGroups : public ProcessGroups {
 public:
  explicit SimulatedGroups(SimulatedKernel& kernel) : kernel_(kernel) {}

  /// A process that has the number of another is a new one, and is read.
  std::int32_t groupOf(std::int32_t pid) override {
    const auto known = known_.find(pid);
    const auto process = kernel_.processes.find(pid);
    const bool isKnown = known != known_.end() && process != kernel_.processes.end() &&
                         known->second.start == process->second.start;
    return isKnown ? known->second.group : readGroupOf(pid);
  }
  std::int32_t readGroupOf(std::int32_t pid) override {
    const auto process = kernel_.processes.find(pid);
    if (process == kernel_.processes.end()) return 0;
    known_[pid] = {process->second.start, process->second.group};
    return process->second.group;
  }
  std::optional<std::uint64_t> timeOf(std::int32_t group) override {
    ++timesAsked;
    if (group == vanished) return std::nullopt;
    return kernel_.groupTimes[group];
  }
  bool hasOnlyKnownMembers(std::int32_t group) override {
    bool areKnown = true;
    for (const auto& [pid, process] : kernel_.processes) {
      if (process.group != group) continue;
      const bool wasElsewhere = groupOf(pid) != group;
      if (wasElsewhere) readGroupOf(pid);
      areKnown = areKnown && !wasElsewhere && !process.hidden;
    }
    return areKnown;
  }
  bool mayHaveUnseen() override { return hadUnseen; }

  bool hadUnseen = true;
  std::int32_t vanished = 0;  ///< This group is there no more.
  int timesAsked = 0;

 private:
  struct Known {
    std::uint64_t start = 0;
    std::int32_t group = 0;
  };

  SimulatedKernel& kernel_;
  std::map<std::int32_t, Known> known_;
};

}  // namespace tidewell
