#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Tests/Fakes/FakeClock.h"
#include "Tests/Tidewell/Accounting/SimulatedGroups.h"
#include "Tests/Tidewell/Accounting/SimulatedKernel.h"
#include "Tidewell/Accounting/ConservedProcesses.h"
#include "Tidewell/ProcessSampler.h"

namespace tidewell {

/// What a conserved table counts, over all its passes.
struct Tally {
  /// Makes one pass of `table`.
  void pass(ConservedProcesses& table) {
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

  std::vector<std::int32_t> listed;      ///< What the last pass listed.
  std::map<std::string, Usage> counted;  ///< By name: what the last pass with this name had.
  std::set<std::string> ended;           ///< The names that the last pass did not have any more.
  Usage usedByEnded;                     ///< What all names had when they ended.
  Usage total;                           ///< What the last pass had, and `usedByEnded`.
};

/// A conserved table over a simulated kernel, and what the table counts.
class ConservedTable : public testing::Test, protected Tally {
 protected:
  /// The number of the process that counts.
  struct ProcessItself {
    std::int32_t pid;
  };

  /// By default there are so many processors that they could have given any time.
  explicit ConservedTable(unsigned processors = 1'000'000)
      : table({kernel, clock, accounts, processors, 0, &groups}) {}
  explicit ConservedTable(ProcessItself self)
      : table({kernel, clock, accounts, 1'000'000, self.pid, &groups}) {}

  /// Makes one pass.
  void pass() {
    clock.advance(std::chrono::seconds(2));
    Tally::pass(table);
  }

  /// What the last pass had with this name. Fails if the last pass did not have the name.
  [[nodiscard]] Usage used(const std::string& name) const {
    const auto found = counted.find(name);
    if (found != counted.end() && !ended.contains(name)) return found->second;
    ADD_FAILURE() << "the last pass did not have " << name;
    return {};
  }

  /// What a name had on the last pass with it. Fails unless it was there before, and is gone.
  [[nodiscard]] Usage usedAtEnd(const std::string& name) const {
    if (ended.contains(name)) return counted.at(name);
    ADD_FAILURE() << name << " has not ended";
    return {};
  }

  /// The names that the last pass had, ascending.
  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> present;
    for (const auto& [name, usage] : counted) {
      if (!ended.contains(name)) present.push_back(name);
    }
    return present;
  }

  SimulatedKernel kernel;
  SimulatedGroups groups{kernel};
  FakeClock clock;
  AccountDirectory accounts;
  ConservedProcesses table;
};

}  // namespace tidewell
