#pragma once

#include <string>
#include <vector>

#include "Platform/Linux/Network/SocketHolders.h"
#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Reads the processes from `/proc`, and the CPU time of each from its CPU clock. A process whose
/// `fd` folder may not be read counts as refused.
class ProcSocketHolders : public SocketHolders {
 public:
  /// Reads below `root`, a folder that is laid out like `/proc`.
  explicit ProcSocketHolders(const std::string& root = "/proc");

  void listPids(std::vector<std::int32_t>& pids) override;
  std::optional<std::uint64_t> cpuTime(std::int32_t pid) override;
  std::optional<std::uint64_t> startTime(std::int32_t pid) override;
  Search visitSockets(std::int32_t pid,
                      const std::function<bool(std::uint32_t inode)>& visit) override;

 private:
  Descriptor root_;
  KernelCpuClock clock_;
};

}  // namespace platform
