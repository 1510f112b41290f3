#include "Platform/Linux/Processes/LinuxProcessTable.h"

#include <algorithm>

namespace platform {

LinuxProcessTable::LinuxProcessTable(ProcessTracker& tracker) : tracker_(tracker) {}

int LinuxProcessTable::listPids(std::span<std::int32_t> buffer) {
  constexpr std::size_t kPidSize = sizeof(std::int32_t);
  const auto& processes = tracker_.processes();
  if (buffer.empty()) {
    tracker_.refreshUnlessPrepared();
    return static_cast<int>(processes.size() * kPidSize);
  }
  const std::size_t count = std::min(buffer.size(), processes.size());
  std::ranges::transform(processes.begin(), processes.begin() + static_cast<std::ptrdiff_t>(count),
                         buffer.begin(), &TrackedProcess::pid);
  return static_cast<int>(count * kPidSize);
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

int LinuxProcessTable::path(std::int32_t pid, std::span<char, kPathCapacity> buffer) {
  const TrackedProcess* process = tracker_.find(pid);
  if (!process || process->path.empty()) return 0;
  // Of a path that is too long the end matters, from a character on.
  std::string_view path = process->path;
  if (path.size() >= buffer.size()) path.remove_prefix(path.size() - buffer.size() + 1);
  while (path.size() < process->path.size() && (path.front() & 0xC0) == 0x80)
    path.remove_prefix(1);
  const std::size_t length = path.copy(buffer.data(), buffer.size() - 1);
  buffer[length] = '\0';
  return static_cast<int>(length);
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
