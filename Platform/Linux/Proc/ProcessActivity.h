#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Tidewell/Ports/Clock.h"

namespace platform {

/// What some processes do, each with all that it has started: by two looks, some time apart. What
/// cannot be known is absent. One thread; both arguments must outlive it.
class ProcessActivity {
 public:
  struct Doing {
    /// Whether there is no process of that number any more.
    bool isGone = false;
    /// Of one core, between the two looks.
    std::optional<double> cpuPercent;
    /// Whether none of them has run between the two looks.
    bool isQuiet = false;
    /// How long they have been quiet.
    std::optional<tidewell::Seconds> quietFor;
  };

  ProcessActivity(ProcFileSystem& proc, CpuClock& cpuClock) : proc_(proc), cpuClock_(cpuClock) {}

  /// The first look.
  void begin(const std::set<std::int32_t>& pids);
  /// The second, at the same processes, `elapsed` later.
  std::map<std::int32_t, Doing> end(tidewell::Seconds elapsed);

 private:
  /// A process and all that it has started.
  struct Family {
    std::vector<std::int32_t> members;
    std::uint64_t cpuNanos = 0;  ///< Ended children that were waited for included.
    friend bool operator==(const Family&, const Family&) = default;
  };

  std::map<std::int32_t, std::optional<Family>> look();
  Doing compare(std::int32_t pid, const std::optional<Family>& before,
                const std::optional<Family>& after, tidewell::Seconds elapsed);
  std::optional<tidewell::Seconds> timeSinceAnyRan(const std::vector<std::int32_t>& members);

  ProcFileSystem& proc_;
  CpuClock& cpuClock_;
  std::set<std::int32_t> pids_;
  std::map<std::int32_t, std::optional<Family>> before_;
};

}  // namespace platform
