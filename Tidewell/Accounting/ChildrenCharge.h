#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Tidewell/Accounting/AccountBook.h"

namespace tidewell {

/// Sorts out what a process gets charged when it reaps children: what had been seen of them is
/// counted elsewhere already, the rest is the process's to answer for.
///
/// Of bounded size, and next to nothing for a process that was charged nothing, as most are. Times
/// are in the table's units, `tolerance` included: the reaped time may be rounded by as much, so it
/// is compared in sum, and an error never adds up.
class ChildrenCharge {
 public:
  /// What the process's counters grew by: its reaped children's time, and its disk bytes, in which
  /// those of its reaped children are.
  void grow(std::uint64_t reapedTime, std::uint64_t disk);

  /// As `grow`, for a process that is read for the first time: any of it may be old, and what was
  /// to be claimed on the next growth is in here.
  void begin(std::uint64_t reapedTime, std::uint64_t disk);

  /// A process ended of which `seen` had been seen. True if that is in here, and is taken out;
  /// false if the reaped time is too short for it. Its bytes are waited for until the settlement
  /// after the next, and then no longer.
  bool claim(const Usage& seen, std::uint64_t tolerance);

  /// As `claim`, for a child that was reaped between two readings: it is taken out when the next
  /// growth is settled, or never.
  void claimOnNext(const Usage& seen);

  /// What the process is to be credited with now: its own disk bytes and all that was used unseen.
  /// Time beyond `most` is dropped, and the same part of the disk bytes with it. Bytes beyond
  /// `most` are dropped where some may be those of reaped children; its own never are.
  Usage settle(const Usage& most, std::uint64_t tolerance);

  /// Whether there is nothing to settle.
  [[nodiscard]] bool isNothing() const { return !charge_; }

  /// What is still to be taken out. Of very many, those that were there first come as one.
  [[nodiscard]] std::vector<Usage> takeDebts();

 private:
  struct Debt {
    Usage seen;
    bool isOld = false;
    friend bool operator==(const Debt&, const Debt&) = default;
  };
  struct Charge {
    std::int64_t time = 0;           ///< Reaped time that is neither claimed nor credited.
    std::uint64_t disk = 0;          ///< Growth of the disk bytes since the last settlement.
    std::uint64_t claimedDisk = 0;   ///< What of it is counted elsewhere.
    bool mayHaveOthersDisk = false;  ///< Whether bytes of reaped children may be in `disk`.
    std::vector<Debt> debts;
    friend bool operator==(const Charge&, const Charge&) = default;
  };

  Charge& charge();

  std::unique_ptr<Charge> charge_;  ///< Null while all of it is nothing.
};

}  // namespace tidewell
