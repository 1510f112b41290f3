#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "Platform/Linux/Network/SocketHolders.h"

namespace platform {

/// Processes that a test sets. Logs which of them were searched, and whose start times were read.
class FakeSocketHolders : public SocketHolders {
 public:
  struct Process {
    std::uint64_t startTime = 0;
    std::uint64_t cpuTime = 1;
    std::vector<std::uint32_t> sockets;
    bool isReadable = true;
  };

  void listPids(std::vector<std::int32_t>& pids) override {
    pids.clear();
    for (const auto& [pid, process] : processes)
      pids.push_back(pid);
  }

  std::optional<std::uint64_t> cpuTime(std::int32_t pid) override {
    if (!processes.contains(pid) || refusesCpuTime) return std::nullopt;
    return processes[pid].cpuTime;
  }

  std::optional<std::uint64_t> startTime(std::int32_t pid) override {
    identified.push_back(pid);
    if (!processes.contains(pid)) return std::nullopt;
    return processes[pid].startTime;
  }

  Search visitSockets(std::int32_t pid,
                      const std::function<bool(std::uint32_t inode)>& visit) override {
    searched.push_back(pid);
    if (!processes.contains(pid) || !processes[pid].isReadable) return Search::refused;
    for (const std::uint32_t inode : processes[pid].sockets) {
      if (!visit(inode)) return Search::stopped;
    }
    return Search::complete;
  }

  /// Lets a process run for a moment.
  void run(std::int32_t pid) { ++processes[pid].cpuTime; }

  std::map<std::int32_t, Process> processes;
  bool refusesCpuTime = false;
  std::vector<std::int32_t> searched;
  std::vector<std::int32_t> identified;
};

}  // namespace platform
