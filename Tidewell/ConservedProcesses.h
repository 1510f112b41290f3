#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Tidewell/CountedProcess.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/ProcessTable.h"
#include "Tidewell/Ports/RunningApplications.h"
#include "Tidewell/ProcessAccounts.h"
#include "Tidewell/UsageAccounts.h"

namespace tidewell {

/// A process table in which nothing that was used is lost, whatever happens to the processes that
/// used it: a build is a build, however many processes it is.
///
/// It stands between the core and the system's own table and running applications, and is both
/// itself. The invariant: **the sum of the counters of everything that it lists only grows, and
/// grows by what the kernel charged, each nanosecond and byte once and under one name.** (Accounts
/// of names that nobody has had for long are dropped, with what they hold.)
///
/// * What a process had used when it ended stays, in an account of its name and application that
///   is listed like a process (`UsageAccounts`).
/// * What a process used before it took another name (by exec) stays under the former name.
/// * What was used unseen, by a process that lived between two passes or in the last stretch of
///   one, is found with the process that reaped it: the growth of its reaped children's time, less
///   what had been seen of the children that ended (`ReaperCharges`). Of that, a child that had
///   been seen gets at most as much again as was seen of it, for its last stretch: so a loop of
///   commands of some seconds each goes on under one name. The rest is credited to who reaped.
///
/// Left out is what no one reaped (its parent ignores its end), and what cannot have been used
/// since the last pass: time beyond what all processors could give in that interval. That is older
/// work, of processes that could not be read, told of all at once when their parent reaps them. It
/// is dropped rather than spread, for spread it would look like work that goes on.
///
/// Where a process that waits to be reaped cannot be read (macOS), it is a guess who reaped the
/// children of one whose end was not seen to its end either. A wrong guess counts such a child's
/// time twice or not at all.
///
/// Main thread only; the arguments must outlive it. A pass costs one look at each process.
class ConservedProcesses : public ProcessTable, public RunningApplications {
 public:
  struct Sources {
    ProcessTable& table;
    RunningApplications& applications;
    Clock& clock;
    ProcessAccounts& accounts;  ///< Is told of every process's account.
    unsigned processors;        ///< How many can work at once; at least 1.
  };

  explicit ConservedProcesses(Sources sources);
  ~ConservedProcesses() override;

  /// Makes a pass over the system's table; the `listPids` that follows answers from it.
  std::span<const std::shared_ptr<const RunningApplication>> all() override;
  std::shared_ptr<const RunningApplication> withProcessIdentifier(std::int32_t pid) override;

  /// The processes in the order of the system's table, then the accounts.
  int listPids(std::span<std::int32_t> buffer) override;
  /// Of the disk bytes, only the sum is conserved; it is reported as read.
  bool resourceUsage(std::int32_t pid, ResourceUsage& usage) override;
  int path(std::int32_t pid, std::span<char, kPathCapacity> buffer) override;
  std::int32_t parent(std::int32_t pid) override;
  bool isAlive(std::int32_t pid) override;
  bool diskIncludesReaped() override { return false; }
  Timebase timebase() override;

 private:
  using Application = std::shared_ptr<const RunningApplication>;

  void pass();
  void measureInterval();
  void readProcesses();
  void readProcess(std::int32_t pid, CountedProcess* known, const Application& application);
  void add(std::int32_t pid, const ResourceUsage& usage, const Application& application);
  void update(CountedProcess& process, const ResourceUsage& usage, const Application& application);
  void readName(CountedProcess& process, std::uint32_t version, const Application& application);
  void growDisk(CountedProcess& process, std::uint64_t bytes);
  void miss(CountedProcess& process);
  void findReapedMeanwhile();
  void removeEnded();
  void updateOrphans();
  void close(const CountedProcess& process);
  void foldAccounts();
  CountedProcess* find(std::int32_t pid);

  Sources sources_;
  UsageAccounts accounts_;
  bool prepared_ = false;
  bool primed_ = false;  ///< Whether a pass was made before.
  Date lastPass_{};
  std::uint64_t mostTime_ = 0;   ///< What all processors can give since the last pass.
  std::uint64_t tolerance_ = 0;  ///< How much reaped time may be rounded. Both in table units.
  std::vector<Application> applications_;  ///< The system's, ascending by pid.
  std::vector<Application> listed_;        ///< Those and the accounts'.
  std::vector<std::int32_t> order_;        ///< As the system's table lists them.
  std::vector<std::int32_t> ascending_;    ///< The same, sorted.
  std::vector<CountedProcess> processes_;  ///< Ascending by pid.
  std::vector<CountedProcess> born_;       ///< New on this pass, ascending.
  std::vector<CountedProcess> gone_;       ///< Ended on this pass, ascending.
  std::size_t cursor_ = 0;                 ///< Where the next `find` is likely to hit.
  std::array<char, kPathCapacity> path_{};
};

}  // namespace tidewell
