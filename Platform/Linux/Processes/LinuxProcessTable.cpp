#include "Platform/Linux/Processes/LinuxProcessTable.h"

namespace platform {

LinuxProcessTable::LinuxProcessTable(ProcessTracker& tracker) : tracker_(tracker) {}

tidewell::ProcessSnapshot LinuxProcessTable::snapshot() {
  tracker_.refresh();
  pids_.clear();
  applications_.clear();
  for (const TrackedProcess& process : tracker_.processes()) {
    pids_.push_back(process.pid);
    if (process.application) applications_.push_back(process.application);
  }
  return {pids_, applications_};
}

bool LinuxProcessTable::resourceUsage(std::int32_t pid, tidewell::ResourceUsage& usage) {
  const TrackedProcess* process = tracker_.find(pid);
  usage = {};
  if (!process) return false;
  usage.startTime = process->startTicks;
  if (process->access != TrackedProcess::Access::readable) return false;
  usage = {.userTime = process->cpuTime,
           .systemTime = 0,
           .diskBytesRead = process->io.readBytes,
           .diskBytesWritten = process->io.writeBytes,
           .reapedTime = tracker_.fromTicks(process->reapedTicks),
           .startTime = process->startTicks,
           .programVersion = process->programVersion};
  return true;
}

std::string_view LinuxProcessTable::path(std::int32_t pid) {
  const TrackedProcess* process = tracker_.find(pid);
  return process ? process->path : std::string_view();
}

std::int32_t LinuxProcessTable::parent(std::int32_t pid) {
  return tracker_.parent(pid);
}

bool LinuxProcessTable::isAlive(std::int32_t pid) {
  return tracker_.isAlive(pid);
}

tidewell::Timebase LinuxProcessTable::timebase() {
  return tracker_.timebase();
}

}  // namespace platform
