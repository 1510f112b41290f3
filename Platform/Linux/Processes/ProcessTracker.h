#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Platform/Linux/Processes/ApplicationResolver.h"
#include "Platform/Linux/Processes/ControlGroups.h"
#include "Platform/Linux/Processes/ProcessReader.h"
#include "Platform/Linux/Processes/TrackedProcess.h"
#include "Platform/Linux/Time/BootTime.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/ProcessTable.h"
#include "Tidewell/Ports/Text.h"

namespace platform {

/// Follows all processes of the machine at the least cost. A process that did not run costs one
/// clock reading and no allocation. Files are read only of processes that ran.
///
/// A pass reads first the clocks of all known processes and then the files. The clocks show who has
/// ended, and the files show what the parents were charged for ended children. So a child whose end
/// is known is seldom missing in its parent's charge. The time of reaped children costs one more
/// file. It is read of processes that have or had children, and of some others whenever the kernel
/// gave out identifiers that nobody has any more.
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
    /// Clock ticks since the machine was started. The kernel counts the start of a process in the
    /// same way.
    std::function<std::uint64_t()> uptimeTicks = clockTicksSinceBoot;
    /// Where the control groups are; empty for nowhere.
    std::string controlGroups = ControlGroups::mountPoint();
  };

  static std::uint64_t clockTicksSinceBoot();

  explicit ProcessTracker(Sources sources);

  /// Makes one pass. Afterwards `processes` lists what is alive and what it has used.
  void refresh();

  /// Ascending by pid. Valid until the next pass.
  [[nodiscard]] const std::vector<TrackedProcess>& processes() const { return processes_; }

  /// The known process with this identifier, or null. Asking in ascending order costs least.
  const TrackedProcess* find(std::int32_t pid);

  /// Reads a process that the last pass did not see, as far as it can be read.
  std::optional<TrackedProcess> readNow(std::int32_t pid);

  /// The process that will reap `pid`, as far as is known; 0 for none. Reads the parent afresh if
  /// the former one has ended.
  std::int32_t parent(std::int32_t pid);

  /// Whether there is such a process at this moment. An ended process counts until it is reaped.
  bool isAlive(std::int32_t pid);

  /// Whether a process may have come and gone between the last two passes.
  [[nodiscard]] bool hadStrangers() const { return hadStrangers_; }

  /// Reads the control group of a process anew; 0 for none.
  std::int32_t readGroup(std::int32_t pid);

  /// What the processes of a control group have used since it was made, in the unit of
  /// `TrackedProcess::cpuTime`. Absent when it cannot be told.
  std::optional<std::uint64_t> groupTime(std::int32_t group);

  /// Whether all processes that a control group has now may be read and were found in it, or were
  /// born since the last pass. Reads the groups of those anew that were found in another.
  bool hasOnlyKnownMembers(std::int32_t group);

  /// The unit of `TrackedProcess::cpuTime` in nanoseconds.
  [[nodiscard]] tidewell::Timebase timebase() const;
  /// Converts clock ticks into that unit.
  [[nodiscard]] std::uint64_t fromTicks(std::uint64_t ticks) const;

 private:
  std::optional<std::uint64_t> cpuTime(std::int32_t pid);
  void readClocks();
  bool readClock(TrackedProcess& process);
  void findNew();
  void readThoseThatRan();
  [[nodiscard]] bool countsStrangers(std::size_t found) const;
  [[nodiscard]] bool wasGivenOutAgain(std::int32_t pid) const;
  [[nodiscard]] bool needsScan(std::optional<std::int32_t> newest) const;
  void scan();
  void probeNew();
  [[nodiscard]] bool isAmongFirst(std::size_t count, std::int32_t pid) const;
  void add(std::int32_t pid);
  [[nodiscard]] bool hasSettled(const TrackedProcess& process) const;
  void mergeNew(std::size_t known);
  TrackedProcess* findKnown(std::int32_t pid);

  bool isKnownMember(std::int32_t pid, std::int32_t group);
  bool mayBeRead(std::int32_t pid);
  static bool mayBeRead(const TrackedProcess& process);
  void forgetUnusedGroups();

  Sources sources_;
  ControlGroups groups_;
  ProcessReader reader_;
  bool clocksWork_;
  long ticksPerSecond_;
  std::vector<TrackedProcess> processes_;
  std::vector<std::int32_t> newParents_;
  bool hadStrangers_ = false;   ///< Whether an identifier went to no process that was found.
  std::int32_t lastSwept_ = 0;  ///< The next sweep for reaped children starts after this pid.
  std::size_t cursor_ = 0;      ///< Where the next `find` is likely to hit.
  std::optional<tidewell::Moment> lastScan_;
  std::optional<std::int32_t> newest_;        ///< The newest identifier in this pass.
  std::optional<std::int32_t> formerNewest_;  ///< The newest identifier in the pass before.
};

}  // namespace platform
