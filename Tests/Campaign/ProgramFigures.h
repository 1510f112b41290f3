#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace staylit::campaign {

/// How much memory process `pid` uses, shared memory included; 0 when there is no such process.
inline long residentKB(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/status");
  const std::string label = "VmRSS:";
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(label)) return std::stol(line.substr(label.size()));
  }
  return 0;
}

inline long openDescriptors(pid_t pid) {
  std::error_code error;
  const std::filesystem::directory_iterator folder("/proc/" + std::to_string(pid) + "/fd", error);
  return error ? 0 : std::distance(begin(folder), end(folder));
}

/// The processor time of the first thread of process `pid`, which runs the ticks, in nanoseconds.
inline std::uint64_t mainThreadNanos(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/schedstat");
  std::uint64_t nanos = 0;
  file >> nanos;
  return nanos;
}

}  // namespace staylit::campaign
