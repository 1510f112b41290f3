#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Tidewell/Accounting/AccountBook.h"
#include "Tidewell/Accounting/AccountDirectory.h"
#include "Tidewell/Accounting/ChargeSettlement.h"
#include "Tidewell/Accounting/FollowedProcesses.h"
#include "Tidewell/Accounting/UsageByName.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/ProcessTable.h"

namespace tidewell {

/// A process table in which nothing that was used is lost, whatever happens to the processes that
/// used it: a build is a build, however many processes it is.
///
/// It stands between the core and the system's own table, and is a table itself. The invariant:
/// **the sum of the counters of everything that it lists, and of the applications that have ended,
/// grows by what the kernel charged, each nanosecond and byte once and under one name.**
///
/// * What a process had used when it ended stays, in an account of its name and application that
///   is listed like a process (`AccountBook`), as long as others of that name run or ended on
///   this very pass. After that the application has ended, and its account is dropped.
/// * What a process used before it took another name (by exec) stays under the former name.
/// * What was used unseen, by a process that lived between two passes or in the last stretch of
///   one, is found with the process that reaped it: the growth of its reaped children's time, less
///   what had been seen of the children that ended (`ChargeSettlement`). Of that, a child that had
///   been seen gets at most as much again as was seen of it, for its last stretch: so a loop of
///   commands of some seconds each goes on under one name. The rest is credited to who reaped.
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
/// Left out is
/// * what nobody was charged for: on Linux the children of one that ignores their end, on macOS
///   what waits to be reaped when its parent ends;
/// * what the tools used that this program itself runs: they are not listed, and nothing is
///   credited to the program for having reaped them. Else it would take a measurement that it makes
///   at every pass for work;
/// * of what is told all at once, by one who reaped or was not read before, that which cannot have
///   been used since the last pass: time beyond what all processors could give in that interval
///   (and the same part of the bytes), and bytes beyond what the fastest drive could carry in it,
///   16 GB/s, both with a margin of a quarter. That is older work, of processes that could not be
///   read. It is dropped rather than spread, for spread it would look like work that goes on. What
///   a process was seen to use itself from one pass to the next is never cut for its amount alone.
///
/// Some things are guessed, and a wrong guess counts a child's usage twice or not at all:
/// * of a process that ends with its parent, who reaped it: its parent, whoever inherited it, or,
/// on
///   macOS, the kernel, which then charges nobody;
/// * on macOS, of one that ignores the end of its children and is charged for each of them twice,
///   what is twice in the charge that it leaves with its own end;
/// * where a process that waits to be reaped could not be read (on neither system is it so), who
///   reaped the children of one whose end was not seen to its end either;
/// * where a process that cannot be read stands between one that can and its reaper, whether it
///   reaped the child itself. It is taken to have done so while it lives.
///
/// Main thread only; the arguments must outlive it. A pass costs one look at each process.
class ConservedProcesses : public ProcessTable {
 public:
  struct Sources {
    ProcessTable& table;
    Clock& clock;
    AccountDirectory& accounts;  ///< Is told of every process's account.
    unsigned processors;         ///< How many can work at once; at least 1.
    std::int32_t self = 0;       ///< The process that counts; 0 for none.
  };

  explicit ConservedProcesses(Sources sources);
  ~ConservedProcesses() override;

  /// Makes a pass over the system's table. Lists the processes in its order, then the accounts.
  ProcessSnapshot snapshot() override;
  /// Of the disk bytes, only the sum is conserved; it is reported as read.
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
  Moment lastPass_{};
  std::vector<std::int32_t> lastUses_;     ///< The accounts that others counted under.
  std::vector<Application> applications_;  ///< The system's, and then the accounts' as well.
};

}  // namespace tidewell
