#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Tests/Fakes/FakeClock.h"
#include "Tests/Tidewell/SimulatedKernel.h"
#include "Tidewell/ConservedProcesses.h"
#include "Tidewell/ProcessSampler.h"

namespace tidewell {

/// A conserved table over a simulated kernel, and what it counts.
class ConservedTable : public testing::Test {
 protected:
  /// Without a number, so many that no growth is beyond what they could give.
  explicit ConservedTable(unsigned processors = 1'000'000)
      : table({kernel, kernel, clock, accounts, processors}) {}

  /// One pass; what is counted afterwards, by name.
  const std::map<std::string, Usage>& pass() {
    clock.advance(std::chrono::seconds(2));
    table.all();
    std::vector<std::int32_t> pids(static_cast<std::size_t>(table.listPids({})) / 4);
    pids.resize(static_cast<std::size_t>(table.listPids(pids)) / 4);
    counted.clear();
    total = {};
    for (const std::int32_t pid : pids) {
      ResourceUsage usage;
      std::array<char, ProcessTable::kPathCapacity> path{};
      if (!table.resourceUsage(pid, usage)) continue;
      const int length = table.path(pid, path);
      const Usage used{usage.userTime + usage.systemTime,
                       usage.diskBytesRead + usage.diskBytesWritten};
      counted[std::string(ProcessSampler::nameFromPath(
          {path.data(), static_cast<std::size_t>(std::max(0, length))}))] += used;
      total += used;
    }
    return counted;
  }

  std::vector<std::int32_t> listed() {
    std::vector<std::int32_t> pids(static_cast<std::size_t>(table.listPids({})) / 4);
    table.listPids(pids);
    return pids;
  }

  SimulatedKernel kernel;
  FakeClock clock;
  ProcessAccounts accounts;
  ConservedProcesses table;
  std::map<std::string, Usage> counted;
  Usage total;
};

}  // namespace tidewell
