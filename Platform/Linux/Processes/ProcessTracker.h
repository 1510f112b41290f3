#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Platform/Linux/Processes/ApplicationResolver.h"
#include "Platform/Linux/Processes/ProcessReader.h"
#include "Platform/Linux/Processes/TrackedProcess.h"
#include "Platform/Linux/Time/BootTime.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/ProcessTable.h"
#include "Tidewell/Ports/Text.h"

namespace platform {

/// Follows all processes of the machine at the least cost: one clock reading for a process that
/// did not run, no allocation for it, and files only for those that did.
///
/// A pass reads the clocks of what it knows first and the files afterwards, so that what a process
/// was charged for its children is seldom older than the news of their end. The time of reaped
/// children lies in a file of its own cost: it is read of the processes that have or had children,
/// and of some others whenever the kernel gave out identifiers that nobody has any more.
///
/// Where the kernel refuses its CPU clocks, the `stat` file of every process is read instead: the
/// same facts at several times the cost, and with the resolution of a clock tick.
/// Main thread only; the arguments must outlive it.
class ProcessTracker {
 public:
  struct Sources {
    ProcFileSystem& proc;
    CpuClock& clock;
    ApplicationResolver& applications;
    tidewell::Text& text;
    std::function<tidewell::Moment()> now = BootTime::now;
    /// Since the machine was started, as the kernel counts the start of a process.
    std::function<std::uint64_t()> uptimeTicks = clockTicksSinceBoot;
  };

  static std::uint64_t clockTicksSinceBoot();

  explicit ProcessTracker(Sources sources);

  /// One pass: after it, `processes` is what is alive and what it has used.
  void refresh();

  /// Ascending by pid. Valid until the next pass.
  [[nodiscard]] const std::vector<TrackedProcess>& processes() const { return processes_; }

  /// Null for a process that is not known. Cheapest when asked in ascending order.
  const TrackedProcess* find(std::int32_t pid);

  /// Reads a process that the last pass did not see, as far as it can be read.
  std::optional<TrackedProcess> readNow(std::int32_t pid);

  /// The process that reaps `pid` when it ends, as far as is known; 0 for none. Looks afresh if the
  /// one that was its parent has ended.
  std::int32_t parent(std::int32_t pid);

  /// Whether there is such a process at this moment, ended or not.
  bool isAlive(std::int32_t pid);

  /// Of `TrackedProcess::cpuTime`: nanoseconds per unit.
  [[nodiscard]] tidewell::Timebase timebase() const;
  /// A number of clock ticks in that unit.
  [[nodiscard]] std::uint64_t fromTicks(std::uint64_t ticks) const;

 private:
  std::optional<std::uint64_t> cpuTime(std::int32_t pid);
  void readClocks();
  bool readClock(TrackedProcess& process);
  void findNew();
  void readThoseThatRan();
  [[nodiscard]] bool hadStrangers(std::size_t found) const;
  [[nodiscard]] bool wasGivenOutAgain(std::int32_t pid) const;
  [[nodiscard]] bool needsScan(std::optional<std::int32_t> newest) const;
  void scan();
  void probeNew();
  [[nodiscard]] bool isAmongFirst(std::size_t count, std::int32_t pid) const;
  void add(std::int32_t pid);
  [[nodiscard]] bool hasSettled(const TrackedProcess& process) const;
  void mergeNew(std::size_t known);
  TrackedProcess* findKnown(std::int32_t pid);

  Sources sources_;
  ProcessReader reader_;
  bool clocksWork_;
  long ticksPerSecond_;
  std::vector<TrackedProcess> processes_;
  std::vector<std::int32_t> newParents_;
  bool hadStrangers_ = false;   ///< Whether others than those found were born since the last pass.
  std::int32_t lastSwept_ = 0;  ///< Where the next sweep for reaped children goes on.
  std::size_t cursor_ = 0;      ///< Where the next `find` is likely to hit.
  std::optional<tidewell::Moment> lastScan_;
  std::optional<std::int32_t> newest_;        ///< The newest identifier, as of this pass.
  std::optional<std::int32_t> formerNewest_;  ///< As of the pass before.
};

}  // namespace platform
