#include "Platform/Linux/Network/OwnerProcesses.h"

#include <algorithm>

namespace platform {

void OwnerProcesses::refresh() {
  std::erase_if(processes_, [this](OwnerProcess& process) { return !stillLives(process); });
}

bool OwnerProcesses::stillLives(OwnerProcess& process) {
  const auto cpuTime = holders_.cpuTime(process.pid);
  if (cpuTime && cpuTime == process.cpuTime) return true;
  if (holders_.startTime(process.pid) != process.startTime) return false;
  process.cpuTime = cpuTime;
  return true;
}

const OwnerProcess* OwnerProcesses::add(std::int32_t pid) {
  if (const OwnerProcess* known = find(pid)) return known;
  // The CPU time is read first, so that work between the two readings shows as time used.
  const auto cpuTime = holders_.cpuTime(pid);
  const auto startTime = holders_.startTime(pid);
  if (!startTime) return nullptr;
  const auto place = std::ranges::lower_bound(processes_, pid, {}, &OwnerProcess::pid);
  return &*processes_.insert(place, {pid, *startTime, cpuTime});
}

bool OwnerProcesses::isAlive(std::int32_t pid, std::uint64_t startTime) const {
  const OwnerProcess* process = find(pid);
  return process && process->startTime == startTime;
}

const OwnerProcess* OwnerProcesses::find(std::int32_t pid) const {
  const auto place = std::ranges::lower_bound(processes_, pid, {}, &OwnerProcess::pid);
  return place != processes_.end() && place->pid == pid ? &*place : nullptr;
}

}  // namespace platform
