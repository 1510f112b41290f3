#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "Tidewell/Accounting/AccountBook.h"
#include "Tidewell/Accounting/AccountDirectory.h"
#include "Tidewell/Accounting/ChargeSettlement.h"
#include "Tidewell/Accounting/FollowedProcesses.h"
#include "Tidewell/Accounting/GroupBalance.h"
#include "Tidewell/Accounting/UsageByName.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/ProcessTable.h"

namespace tidewell {

/// A process table in which no usage is lost when processes end. So a build is one piece of work,
/// however many processes it is made of.
///
/// It stands between the core and the system's own table, and is a table itself. The invariant:
/// **the sum of the counters of everything that it lists, and of the applications that have ended,
/// grows by what the kernel charged, each nanosecond and byte once and under one name.**
///
/// The rules, and what is lost without each. The figures are of real commands that ran for 36 s on
/// a loaded machine, counted with and without the rule side by side. "Passes" are those on which
/// the commands were busy. With all rules, the sum was within 0.02 s of what the kernel had
/// charged, apart from what another user's processes had used that were not reaped yet.
///
/// * When a process ends, what it used stays in an account of its name and application
///   (`AccountBook`). The account is listed like a process as long as others of that name run, or
///   ended on this very pass. After that the application has ended, and the account is dropped.
///   Without accounts, a loop of commands of three seconds is busy on 2 of 18 passes instead of 9.
/// * What a new process has used since it was born counts (`UsageByName`). Without that, 67 % of
///   the work of `xargs` with commands of a tenth of a second is counted, and 94 % of that of
///   `make`.
/// * What a process used before it took another name by an exec stays under the former name
///   (`UsageByName`). Otherwise `ffmpeg`, started by the exec of a script that had used three
///   seconds, would begin with these three seconds.
/// * Some usage is never seen: that of a process which lived between two passes, and that of the
///   last stretch of every process. It is found with the process that reaped the ended one: the
///   growth of the reaped children's time, less what had been seen of these children
///   (`ChargeSettlement`). Without that, 2 % of the work of a shell that runs short compilations is
///   counted.
/// * Some usage is told to no parent, or to one that does not belong to the work, such as a service
///   manager that reaps orphans. It is found in what the whole group of processes has used
///   (`GroupBalance`). Without that, workers of a tenth of a second are never busy if their parent
///   ignores their end, and orphans of that length are busy under the name of the manager.
/// * Of this growth, a child that had been seen gets at most as much again as was seen of it. So a
///   loop of commands of some seconds each goes on under one name. The reaper gets the rest.
///
/// An example, in seconds. `make` starts a compiler, `cc`, again and again.
///
///     pass  since the pass before                                  listed by this pass
///     1     make used 1 itself, cc (a first one) used 3            make 1, cc 3
///     2     that cc used 2 more, ended and was reaped by make,     make 1, account of cc 5
///           which was charged 5: 3 of them were seen already, and
///           the 2 others are the last stretch of that cc
///     3     a second cc was born, used 4 and was reaped, all       make 5
///           unseen: make was charged 4 and answers for them. As
///           no cc runs, the account of cc is dropped
///     4     a third cc was born and used 2                         make 5, cc 2
///
/// The sum, with the 5 of the dropped account: 4, 6, 10, 12, which is what the kernel charged.
///
/// The table leaves out:
/// * Usage that the kernel charges to nobody, unless it is found in the time of a control group. On
///   Linux that is the usage of children whose parent ignores their end. On macOS it is the usage
///   of a process that waits to be reaped when its parent ends.
/// * Usage of the tools that this program itself runs. They are not listed, and the program is
///   credited with nothing for having reaped them. Otherwise it would take its own measurements for
///   work.
/// * Usage that is told all at once and is older than the last pass. A process may be charged for
///   children that could not be read, or may be read for the first time. Then time is dropped
///   beyond what all processors can have given since the last pass, and bytes are dropped beyond
///   what the fastest drive can have carried (16 GB/s), both with a margin of a quarter. If the
///   rest were spread over later passes, it would look like work that goes on. What a process is
///   seen to use itself from one pass to the next is never cut for its amount alone.
///
/// The table guesses in these cases. A wrong guess counts the usage of a child twice or not at all:
/// * A process ended together with its parent. It was reaped by the parent, by the heir of the
///   parent, or, on macOS, by the kernel, which then charges nobody.
/// * On macOS, a process that ignores the end of its children is charged twice for each of them.
///   When it ends itself, nobody knows which part of its charge is there twice.
/// * A process that cannot be read is the parent of one that can. As long as the parent lives, it
///   is taken for the reaper of its children.
/// * A process that reaps orphans of other groups is in no group that can be read, or the group of
///   an orphan cannot be. Then a credit for one group may be taken back from the charge for
///   another.
/// * On Linux, a child is reaped in the 5 µs between two readings of its parent: that of the bytes
///   and that of the reaped time. The bytes of the child are then counted twice.
///
/// Main thread only; the arguments must outlive it. A pass looks once at each process.
class ConservedProcesses : public ProcessTable {
 public:
  struct Sources {
    ProcessTable& table;
    Clock& clock;
    AccountDirectory& accounts;       ///< Is told the account of every process.
    unsigned processors;              ///< How many can work at once; at least 1.
    std::int32_t self = 0;            ///< The process that counts; 0 for none.
    ProcessGroups* groups = nullptr;  ///< Null where the system has none.
  };

  explicit ConservedProcesses(Sources sources);
  ~ConservedProcesses() override;

  /// Makes a pass over the system's table. Lists the processes in the order of that table, and then
  /// the accounts.
  ProcessSnapshot snapshot() override;
  /// Only the sum of the disk bytes is conserved. It is reported as bytes read.
  bool resourceUsage(std::int32_t pid, ResourceUsage& usage) override;
  std::string_view path(std::int32_t pid) override;
  std::int32_t parent(std::int32_t pid) override;
  bool isAlive(std::int32_t pid) override;
  bool diskIncludesReaped() override { return false; }
  Timebase timebase() override;

 private:
  using Application = std::shared_ptr<const RunningApplication>;

  void pass(const ProcessSnapshot& system);
  ChargeSettlement::Terms nextTerms();
  void settleCharges(const ChargeSettlement::Terms& terms);
  void closeGone();
  void noteUses();

  Sources sources_;
  AccountBook accounts_;
  UsageByName usage_;
  FollowedProcesses processes_;
  std::optional<GroupBalance> groups_;
  Moment lastPass_{};
  std::vector<std::int32_t> lastUses_;     ///< The accounts that other measurements used.
  std::vector<Application> applications_;  ///< Those of the system, and those of the accounts.
};

}  // namespace tidewell
