#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/ProcessTable.h"
#include "Tidewell/Ports/RunningApplications.h"

namespace tidewell {

/// A kernel for tests. Its processes are born, work, replace their program, end, and are reaped or
/// inherited, and it charges for this as a real kernel does. One unit of time is a second. It has
/// the habits of Linux, and `beAMac` gives it those of macOS. For tests of the worst case it can
/// have habits that neither of the two has.
class SimulatedKernel : public ProcessTable {
 public:
  /// As on Linux, a process that waits to be reaped is listed and can be read. The differences:
  /// * The reaper is charged with the time of a process, but not with its bytes.
  /// * The start of a process that cannot be read is not told.
  /// * A number is not given out again until all others were.
  /// * A process that ignores the end of its children is charged twice for each of them: when the
  ///   child ends, and when the kernel reaps the child right then.
  /// * A process that waits to be reaped when its parent ends is charged to nobody. The kernel has
  ///   settled before what the reaper of the parent will be charged.
  void beAMac() {
    addsReapedDisk = false;
    tellsStart = false;
    givesNumbersAgain = false;
    hasSubreapers = false;
    chargesUnreapedTwice = true;
    dropsTheUnreapedOfTheDead = true;
  }

  struct Process {
    std::int32_t parent = 0;
    std::uint64_t start = 0;
    std::uint64_t own = 0;
    std::uint64_t reaped = 0;
    std::uint64_t disk = 0;  ///< Includes the bytes of reaped children.
    std::string path;
    std::uint32_t version = 1;
    bool zombie = false;
    bool reapsNobody = false;  ///< Its children vanish by themselves when they end.
    bool hidden = false;       ///< Its counters may not be read, because it is another user's.
    std::int32_t group = 0;
  };

  SimulatedKernel() { processes[1] = {.path = "/sbin/init"}; }

  std::int32_t spawn(std::int32_t parent, const std::string& path) {
    std::int32_t pid = 2;
    if (givesNumbersAgain) {
      while (processes.contains(pid))
        ++pid;
    } else {
      pid = ++latest;
    }
    processes[pid] = {.parent = parent, .start = ++clock, .path = path};
    processes[pid].group = processes.at(parent).group;
    return pid;
  }
  void work(std::int32_t pid, std::uint64_t time, std::uint64_t disk = 0) {
    processes.at(pid).own += time;
    processes.at(pid).disk += disk;
    groupTimes[processes.at(pid).group] += time;
    charged += time;
    chargedDisk += disk;
  }
  void exec(std::int32_t pid, const std::string& path) {
    processes.at(pid).path = path;
    ++processes.at(pid).version;
  }
  /// Ends the process; its children go to `heir`.
  void end(std::int32_t pid, std::int32_t heir = 1) {
    if (dropsTheUnreapedOfTheDead) dropUnreapedOf(pid);
    for (auto& [childPid, child] : processes) {
      if (child.parent == pid) child.parent = heir;
    }
    Process& process = processes.at(pid);
    process.zombie = true;
    if (isChargedTwice(pid)) handedOnTwice += process.reaped / 2;
    Process& parent = processes.at(process.parent);
    if (!parent.reapsNobody) return;
    if (chargesUnreapedTwice) parent.reaped += 2 * (process.own + process.reaped);
    processes.erase(pid);
  }
  void reap(std::int32_t pid) {
    const Process process = processes.at(pid);
    processes.erase(pid);
    Process& parent = processes.at(process.parent);
    parent.reaped += process.own + process.reaped;
    if (addsReapedDisk) parent.disk += process.disk;
  }
  void endAndReap(std::int32_t pid) {
    end(pid);
    if (processes.contains(pid)) reap(pid);
  }

  ProcessSnapshot snapshot() override {
    listed_.clear();
    for (const auto& [pid, process] : processes) {
      if (!hidesZombies || !process.zombie) listed_.push_back(pid);
    }
    return {listed_, applications};
  }
  bool resourceUsage(std::int32_t pid, ResourceUsage& usage) override {
    if (beforeReading) beforeReading(pid);
    const auto found = processes.find(pid);
    usage = {};
    if (found == processes.end()) return false;
    const Process& process = found->second;
    if (hidesZombies && process.zombie) return false;
    if (tellsStart) usage.startTime = process.start;
    if (process.hidden || unreadable == pid) return false;
    usage.userTime = process.own;
    usage.diskBytesWritten = process.disk;
    usage.reapedTime = process.reaped;
    usage.startTime = process.start;
    usage.programVersion = process.version;
    return true;
  }
  std::string_view path(std::int32_t pid) override {
    const auto found = processes.find(pid);
    const bool isTold = found != processes.end() && !found->second.zombie;
    return isTold ? std::string_view(found->second.path) : std::string_view();
  }
  std::int32_t parent(std::int32_t pid) override {
    const auto found = processes.find(pid);
    return found == processes.end() ? 0 : found->second.parent;
  }
  bool isAlive(std::int32_t pid) override { return processes.contains(pid); }
  bool isChargedTwice(std::int32_t pid) override {
    const auto found = processes.find(pid);
    return chargesUnreapedTwice && found != processes.end() && found->second.reapsNobody;
  }
  bool diskIncludesReaped() override { return addsReapedDisk; }
  Timebase timebase() override { return {1'000'000'000, 1}; }

  std::map<std::int32_t, Process> processes;
  std::map<std::int32_t, std::uint64_t> groupTimes;  ///< By group, with all that ended.
  std::vector<std::shared_ptr<const RunningApplication>> applications;
  std::int32_t latest = 1;
  std::uint64_t clock = 0;
  std::uint64_t charged = 0;  ///< All time that processes have ever used.
  std::uint64_t chargedDisk = 0;
  std::function<void(std::int32_t pid)> beforeReading;  ///< Lets things happen during a pass.
  std::int32_t unreadable = 0;
  bool tellsStart = true;         ///< Tells also the start of processes that cannot be read.
  bool givesNumbersAgain = true;  ///< Gives the lowest free number, or else a new one.
  bool hasSubreapers = true;      ///< Any process may inherit, not only the first.
  bool hidesZombies = false;      ///< Neither lists nor reads what waits to be reaped.
  bool addsReapedDisk = true;     ///< Adds the bytes of reaped children to their reaper's.
  bool chargesUnreapedTwice = false;
  bool dropsTheUnreapedOfTheDead = false;
  std::uint64_t dropped = 0;        ///< The time of processes that were charged to nobody.
  std::uint64_t handedOnTwice = 0;  ///< What was charged twice and then handed on.

 private:
  void dropUnreapedOf(std::int32_t parent) {
    std::erase_if(processes, [&](const auto& entry) {
      const Process& process = entry.second;
      const bool isDropped = process.parent == parent && process.zombie;
      if (isDropped) dropped += process.own + process.reaped;
      return isDropped;
    });
  }

  std::vector<std::int32_t> listed_;
};

}  // namespace tidewell
