#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Tidewell/Accounting/AccountBook.h"

namespace tidewell {

/// What one process was charged for the children that it reaped.
///
/// A part of the charge had been seen while the children lived, and is counted elsewhere. A claim
/// takes this part out. The rest was used unseen, and `settle` credits it to the process.
///
/// Times are in the table's units. A process that was charged nothing, as most are, costs next to
/// nothing. The rules, and what is lost without each:
///
/// * The kernel cuts reaped times to hundredths of a second, so a claim succeeds up to `tolerance`
///   beyond the charge. The sums are compared, so the cuts never add up. With no tolerance, claims
///   failed, and 1.5 times the work of two commands in a loop was counted.
/// * A claim may come before its charge: a child that was reaped between two readings, or by a
///   parent that cannot be read. Such a claim waits as a debt for the next growth. Without debts,
///   1.9 times the work of commands is counted that a script of another user starts.
/// * There are at most 256 debts, or those of a process that is never read would grow for ever.
/// * What is credited is cut to what can have been used since the last settlement. Otherwise a job
///   of 80,000 s that could not be read would be shown as 40,000 processors' work when it ends.
class ChildrenCharge {
 public:
  /// The counters of the process grew: by the time of reaped children, and by disk bytes, which
  /// include those of reaped children.
  void grow(std::uint64_t reapedTime, std::uint64_t disk);

  /// As `grow`, for the first reading of a process. All of it may be old, and all debts are in it.
  void begin(std::uint64_t reapedTime, std::uint64_t disk);

  /// Takes out what had been seen of a child that ended. False, and nothing is taken out, if the
  /// charged time is too short for that.
  bool claim(const Usage& seen, std::uint64_t tolerance);

  /// As `claim`, for a charge that comes with the next growth. When that is settled, the claim is
  /// made, or is given up.
  void claimOnNext(const Usage& seen);

  /// What the process is to be credited with now: its own disk bytes, and everything that was used
  /// unseen. Time beyond `most` is dropped, and so are bytes beyond it if some may be those of
  /// reaped children.
  Usage settle(const Usage& most, std::uint64_t tolerance);

  /// Whether there is nothing to settle.
  [[nodiscard]] bool isNothing() const { return !charge_; }

  /// Hands over the debts. If there were too many, the oldest come as one.
  [[nodiscard]] std::vector<Usage> takeDebts();

 private:
  struct Debt {
    Usage seen;
    bool isOld = false;  ///< Whether a settlement has passed, so that the charge must be there now.
    friend bool operator==(const Debt&, const Debt&) = default;
  };
  struct Charge {
    std::int64_t time = 0;           ///< Reaped time that is neither claimed nor credited.
    std::uint64_t disk = 0;          ///< Growth of the disk bytes since the last settlement.
    std::uint64_t claimedDisk = 0;   ///< The part of `disk` that is counted elsewhere.
    bool mayHaveOthersDisk = false;  ///< Whether bytes of reaped children may be in `disk`.
    std::vector<Debt> debts;
    friend bool operator==(const Charge&, const Charge&) = default;
  };

  Charge& charge();

  std::unique_ptr<Charge> charge_;  ///< Null while there is no charge and no debt.
};

}  // namespace tidewell
