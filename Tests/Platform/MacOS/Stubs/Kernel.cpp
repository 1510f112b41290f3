#include "Tests/Platform/MacOS/Stubs/Kernel.h"

#include <libproc.h>
#include <mach/mach_time.h>
#include <sys/proc.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>

#include "Tests/Platform/MacOS/Stubs/Ledger.h"
#include "Tests/Platform/MacOS/Stubs/ProcMirror.h"

namespace platform::stub {
namespace {

/// So many more may start until the list is asked for.
constexpr std::size_t kRoomToSpare = 20;

int failWith(int error) {
  errno = error;
  return 0;
}

/// The process, if it can be told of in `function`; says why not otherwise.
std::optional<Process> processFor(std::int32_t pid, bool isAskedForUsage) {
  auto process = Kernel::shared().find(pid);
  if (!process) errno = ESRCH;
  if (process && isAskedForUsage && geteuid() != 0 && process->user != geteuid()) {
    errno = EPERM;
    return std::nullopt;
  }
  return process;
}

}  // namespace

Kernel& Kernel::shared() {
  static Kernel kernel;
  return kernel;
}

std::vector<Process> Kernel::list() const {
  if (processes) return *processes;
  std::vector<Process> all;
  for (const std::int32_t pid : mirroredPids())
    all.push_back({.pid = pid});
  return all;
}

std::optional<Process> Kernel::find(std::int32_t pid) const {
  if (!processes) return mirroredProcess(pid, static_cast<double>(numer) / denom);
  const auto found = std::ranges::find(*processes, pid, &Process::pid);
  return found == processes->end() ? std::nullopt : std::optional(*found);
}

}  // namespace platform::stub

using platform::stub::Kernel;
using platform::stub::Ledger;
using platform::stub::Process;

extern "C" {

int proc_listpids(std::uint32_t type, std::uint32_t, void* buffer, int size) {
  constexpr std::size_t kEach = sizeof(std::int32_t);
  Kernel& kernel = Kernel::shared();
  if (type != PROC_ALL_PIDS) return platform::stub::failWith(EINVAL);
  const std::vector<Process> all = kernel.list();
  if (buffer == nullptr) {
    if (kernel.offersNoRoom) return platform::stub::failWith(ENOMEM);
    const auto room = static_cast<int>((all.size() + platform::stub::kRoomToSpare) * kEach);
    if (kernel.afterOfferingRoom) std::exchange(kernel.afterOfferingRoom, nullptr)();
    return room;
  }
  if (kernel.listsNothing) return platform::stub::failWith(ENOMEM);
  const std::size_t count = std::min(all.size(), static_cast<std::size_t>(size) / kEach);
  for (std::size_t index = 0; index < count; ++index)
    std::memcpy(static_cast<char*>(buffer) + index * kEach, &all[index].pid, kEach);
  return static_cast<int>(count * kEach);
}

int proc_pid_rusage(int pid, int flavor, rusage_info_t* buffer) {
  const auto process = platform::stub::processFor(pid, /*isAskedForUsage=*/true);
  if (!process) return -1;
  if (flavor != RUSAGE_INFO_V4) {
    errno = EINVAL;
    return -1;
  }
  rusage_info_v4 info{};
  info.ri_user_time = process->userTime;
  info.ri_system_time = process->systemTime;
  info.ri_proc_start_abstime = process->startTime;
  info.ri_child_user_time = process->childUserTime;
  info.ri_child_system_time = process->childSystemTime;
  info.ri_diskio_bytesread = process->diskBytesRead;
  info.ri_diskio_byteswritten = process->diskBytesWritten;
  std::memcpy(buffer, &info, sizeof info);
  return 0;
}

int proc_pidpath(int pid, void* buffer, std::uint32_t size) {
  // Less or more room than this is refused.
  if (size > PROC_PIDPATHINFO_MAXSIZE) return platform::stub::failWith(EOVERFLOW);
  const auto process = platform::stub::processFor(pid, /*isAskedForUsage=*/false);
  if (!process) return 0;
  if (process->waitsToBeReaped || process->path.empty()) return platform::stub::failWith(ESRCH);
  if (process->path.size() >= size) return platform::stub::failWith(ENOSPC);
  std::memcpy(buffer, process->path.c_str(), process->path.size() + 1);
  return static_cast<int>(process->path.size());
}

int proc_pidinfo(int pid, int flavor, std::uint64_t argument, void* buffer, int size) {
  if (flavor != PROC_PIDT_SHORTBSDINFO) return platform::stub::failWith(EINVAL);
  const auto process = platform::stub::processFor(pid, /*isAskedForUsage=*/false);
  if (!process) return 0;
  const bool findsEnded = argument == 1;
  if (process->waitsToBeReaped && !findsEnded) return platform::stub::failWith(ESRCH);
  proc_bsdshortinfo info{};
  if (size < static_cast<int>(sizeof info)) return platform::stub::failWith(ENOMEM);
  info.pbsi_pid = static_cast<std::uint32_t>(process->pid);
  info.pbsi_ppid = static_cast<std::uint32_t>(process->parent);
  std::memcpy(buffer, &info, sizeof info);
  return static_cast<int>(sizeof info);
}

int sysctl(int* name, unsigned int length, void* old, std::size_t* oldSize, void*, std::size_t) {
  const bool isKnown =
      length == 4 && name[0] == CTL_KERN && name[1] == KERN_PROC && name[2] == KERN_PROC_PID;
  if (!isKnown || *oldSize < sizeof(kinfo_proc)) {
    errno = isKnown ? ENOMEM : ENOENT;
    return -1;
  }
  const auto process = platform::stub::processFor(name[3], /*isAskedForUsage=*/false);
  // Nobody has such a number: no record, and no error.
  *oldSize = process ? sizeof(kinfo_proc) : 0;
  if (!process) return 0;
  kinfo_proc info{};
  info.kp_proc.p_pid = process->pid;
  info.kp_proc.p_flag = process->ignoresEndOfChildren ? P_NOCLDWAIT : 0;
  std::memcpy(old, &info, sizeof info);
  return 0;
}

int mach_timebase_info(mach_timebase_info_data_t* info) {
  info->numer = Kernel::shared().numer;
  info->denom = Kernel::shared().denom;
  return 0;
}
}
