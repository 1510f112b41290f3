#include "Platform/MacOS/Processes/LibprocProcessTable.h"

#include <libproc.h>
#include <mach/mach_time.h>
#include <sys/proc.h>
#include <sys/sysctl.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <limits>
#include <string>
#include <string_view>

#include "Platform/MacOS/Text/Unicode.h"
#include "Tidewell/ForeignText.h"

namespace platform {

int LibprocProcessTable::listPids(std::span<std::int32_t> buffer) {
  if (buffer.empty()) return proc_listpids(PROC_ALL_PIDS, 0, nullptr, 0);
  constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<int>::max());
  return proc_listpids(PROC_ALL_PIDS, 0, buffer.data(),
                       static_cast<int>(std::min(buffer.size_bytes(), kMost)));
}

bool LibprocProcessTable::resourceUsage(std::int32_t pid, tidewell::ResourceUsage& usage) {
  rusage_info_v4 info{};
  usage = {};
  if (proc_pid_rusage(pid, RUSAGE_INFO_V4, reinterpret_cast<rusage_info_t*>(&info)) != 0)
    return false;
  usage = {.userTime = info.ri_user_time,
           .systemTime = info.ri_system_time,
           .diskBytesRead = info.ri_diskio_bytesread,
           .diskBytesWritten = info.ri_diskio_byteswritten,
           .reapedTime = info.ri_child_user_time + info.ri_child_system_time,
           .startTime = info.ri_proc_start_abstime};
  return true;
}

std::string_view LibprocProcessTable::path(std::int32_t pid) {
  static_assert(kPathCapacity == PROC_PIDPATHINFO_MAXSIZE);
  const int length = proc_pidpath(pid, path_.data(), static_cast<std::uint32_t>(path_.size()));
  if (length < 1 || static_cast<std::size_t>(length) >= path_.size()) return {};
  const std::string_view path(path_.data(), static_cast<std::size_t>(length));
  cleanPath_ = tidewell::cleaned(path, path_.size());
  return cutToBytes(cleanPath_, path_.size() - 1);
}

std::int32_t LibprocProcessTable::parent(std::int32_t pid) {
  // The short record may be read of every user's processes.
  proc_bsdshortinfo info{};
  constexpr std::uint64_t kAlsoOfUnreaped = 1;
  const int length = proc_pidinfo(pid, PROC_PIDT_SHORTBSDINFO, kAlsoOfUnreaped, &info, sizeof info);
  if (length != static_cast<int>(sizeof info)) return 0;
  return static_cast<std::int32_t>(info.pbsi_ppid);
}

bool LibprocProcessTable::isAlive(std::int32_t pid) {
  return kill(pid, 0) == 0 || errno == EPERM;
}

bool LibprocProcessTable::isChargedTwice(std::int32_t pid) {
  std::array<int, 4> name{CTL_KERN, KERN_PROC, KERN_PROC_PID, pid};
  kinfo_proc info{};
  std::size_t size = sizeof info;
  const int status = sysctl(name.data(), name.size(), &info, &size, nullptr, 0);
  return status == 0 && size == sizeof info && (info.kp_proc.p_flag & P_NOCLDWAIT) != 0;
}

tidewell::Timebase LibprocProcessTable::timebase() {
  static const tidewell::Timebase timebase = [] {
    mach_timebase_info_data_t info{};
    mach_timebase_info(&info);
    return tidewell::Timebase{.numer = info.numer, .denom = info.denom};
  }();
  return timebase;
}

}  // namespace platform
