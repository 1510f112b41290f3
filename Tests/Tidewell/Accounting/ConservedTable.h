#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Tests/Fakes/FakeClock.h"
#include "Tests/Tidewell/Accounting/SimulatedKernel.h"
#include "Tidewell/Accounting/ConservedProcesses.h"
#include "Tidewell/ProcessSampler.h"

namespace tidewell {

/// A conserved table over a simulated kernel, and what it counts.
class ConservedTable : public testing::Test {
 protected:
  /// The number of the process that counts.
  struct ProcessItself {
    std::int32_t pid;
  };

  /// Without a number, so many that no growth is beyond what they could give.
  explicit ConservedTable(unsigned processors = 1'000'000)
      : table({kernel, clock, accounts, processors}) {}
  explicit ConservedTable(ProcessItself self)
      : table({kernel, clock, accounts, 1'000'000, self.pid}) {}

  /// One pass.
  void pass() {
    clock.advance(std::chrono::seconds(2));
    const ProcessSnapshot snapshot = table.snapshot();
    listed.assign(snapshot.processes.begin(), snapshot.processes.end());
    std::map<std::string, Usage> present;
    total = {};
    for (const std::int32_t pid : listed) {
      ResourceUsage usage;
      if (!table.resourceUsage(pid, usage)) continue;
      const Usage used{usage.userTime + usage.systemTime,
                       usage.diskBytesRead + usage.diskBytesWritten};
      present[std::string(ProcessSampler::nameFromPath(table.path(pid)))] += used;
      total += used;
    }
    for (const auto& [name, usage] : counted) {
      if (!present.contains(name) && ended.insert(name).second) usedByEnded += usage;
    }
    total += usedByEnded;
    for (const auto& [name, usage] : present) {
      counted[name] = usage;
      ended.erase(name);
    }
  }

  /// Of all that the last pass had, ascending.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> present;
    for (const auto& [name, usage] : counted) {
      if (!ended.contains(name)) present.push_back(name);
    }
    return present;
  }

  SimulatedKernel kernel;
  FakeClock clock;
  AccountDirectory accounts;
  ConservedProcesses table;
  std::vector<std::int32_t> listed;      ///< On the last pass.
  std::map<std::string, Usage> counted;  ///< By name, on the last pass that had the name.
  std::set<std::string> ended;           ///< The names that the last pass had no more.
  Usage usedByEnded;                     ///< What all names had when a pass first missed them.
  Usage total;                           ///< Of everything on the last pass, and of those names.
};

}  // namespace tidewell
