#include "Platform/Linux/Network/OwnerProcesses.h"

#include <algorithm>
#include <utility>

namespace platform {

void OwnerProcesses::refresh() {
  std::erase_if(processes_, [this](OwnerProcess& process) { return !stillLives(process); });
}

bool OwnerProcesses::stillLives(OwnerProcess& process) {
  const auto cpuTime = holders_.cpuTime(process.pid);
  if (cpuTime && cpuTime == process.cpuTime) return true;
  auto identity = holders_.identity(process.pid);
  if (!identity || identity->startTime != process.startTime) return false;
  process.cpuTime = cpuTime;
  process.name = std::move(identity->name);
  return true;
}

const OwnerProcess* OwnerProcesses::add(std::int32_t pid) {
  if (const OwnerProcess* known = find(pid)) return known;
  // In this order: what the process does in between shows as time used.
  const auto cpuTime = holders_.cpuTime(pid);
  auto identity = holders_.identity(pid);
  if (!identity) return nullptr;
  const auto place = std::ranges::lower_bound(processes_, pid, {}, &OwnerProcess::pid);
  return &*processes_.insert(place, {pid, identity->startTime, cpuTime, std::move(identity->name)});
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
