#pragma once

// The part of the kernel's records that the adapters use, for systems without it. `Kernel.h` has
// the processes.

#include <cstddef>
#include <cstdint>

extern "C" {

struct extern_proc {
  int p_flag;
  std::int32_t p_pid;
};

struct kinfo_proc {
  extern_proc kp_proc;
};

int sysctl(int* name, unsigned int length, void* old, std::size_t* oldSize, void* fresh,
           std::size_t freshSize);
}

inline constexpr int CTL_KERN = 1;
inline constexpr int KERN_PROC = 14;
inline constexpr int KERN_PROC_PID = 1;
