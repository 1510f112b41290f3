#pragma once

// The part of the process information interface that the adapters use, for systems without it.
// `Kernel.h` has the processes.

#include <cstddef>
#include <cstdint>

extern "C" {

using rusage_info_t = void*;

/// Less fields than there; the kernel knows a record by its flavour alone.
struct rusage_info_v4 {
  std::uint64_t ri_user_time;
  std::uint64_t ri_system_time;
  std::uint64_t ri_proc_start_abstime;
  std::uint64_t ri_child_user_time;
  std::uint64_t ri_child_system_time;
  std::uint64_t ri_diskio_bytesread;
  std::uint64_t ri_diskio_byteswritten;
};

struct proc_bsdshortinfo {
  std::uint32_t pbsi_pid;
  std::uint32_t pbsi_ppid;
};

int proc_listpids(std::uint32_t type, std::uint32_t argument, void* buffer, int size);
int proc_pid_rusage(int pid, int flavor, rusage_info_t* buffer);
int proc_pidpath(int pid, void* buffer, std::uint32_t size);
int proc_pidinfo(int pid, int flavor, std::uint64_t argument, void* buffer, int size);
}

inline constexpr std::uint32_t PROC_ALL_PIDS = 1;
inline constexpr int RUSAGE_INFO_V4 = 4;
inline constexpr int PROC_PIDT_SHORTBSDINFO = 13;
inline constexpr std::size_t PROC_PIDPATHINFO_MAXSIZE = 4096;
