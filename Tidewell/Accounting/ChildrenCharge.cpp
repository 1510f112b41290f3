#include "Tidewell/Accounting/ChildrenCharge.h"

#include <algorithm>
#include <utility>

namespace tidewell {
namespace {

/// A process that is never read is never settled, and its debts wait for its end.
constexpr std::size_t kMostDebts = 256;
/// Bytes and time are read one after the other, so the bytes may come a settlement later.
constexpr int kSettlementsWithOthers = 2;

}  // namespace

void ChildrenCharge::grow(std::uint64_t reapedTime, std::uint64_t disk) {
  time_ += static_cast<std::int64_t>(reapedTime);
  disk_ += disk;
  if (reapedTime > 0) settlementsWithOthers_ = kSettlementsWithOthers;
}

void ChildrenCharge::begin(std::uint64_t reapedTime, std::uint64_t disk) {
  grow(reapedTime, disk);
  settlementsWithOthers_ = kSettlementsWithOthers;
  for (Debt& debt : debts_)
    debt.isOld = true;
}

bool ChildrenCharge::claim(const Usage& seen, std::uint64_t tolerance) {
  const auto wanted = static_cast<std::int64_t>(seen.time);
  if (time_ + static_cast<std::int64_t>(tolerance) < wanted) return false;
  time_ -= wanted;
  claimedDisk_ += seen.disk;
  return true;
}

void ChildrenCharge::claimOnNext(const Usage& seen) {
  if (debts_.size() >= kMostDebts) {
    debts_[1].seen += debts_[0].seen;
    debts_.erase(debts_.begin());
  }
  debts_.push_back({seen});
}

Usage ChildrenCharge::settle(const Usage& most, std::uint64_t tolerance) {
  std::erase_if(debts_, [&](Debt& debt) {
    // On its second pass it is in here, or it never will be.
    if (debt.isOld) claim(debt.seen, tolerance);
    return std::exchange(debt.isOld, true);
  });
  const std::uint64_t time = time_ > 0 ? static_cast<std::uint64_t>(time_) : 0;
  time_ -= static_cast<std::int64_t>(time);
  Usage all{time, takeUnclaimedDisk()};
  if (all.time > most.time) all = all.part(most.time);
  if (settlementsWithOthers_ > 0) {
    --settlementsWithOthers_;
    all.disk = std::min(all.disk, most.disk);
  }
  return all;
}

/// The bytes that are not counted elsewhere. A claim may be ahead of the growth, so what is left of
/// the latest ones waits once more.
std::uint64_t ChildrenCharge::takeUnclaimedDisk() {
  std::uint64_t unclaimed = std::exchange(disk_, 0);
  unclaimed -= std::min(unclaimed, formerClaimedDisk_);
  const std::uint64_t counted = std::min(unclaimed, claimedDisk_);
  formerClaimedDisk_ = std::exchange(claimedDisk_, 0) - counted;
  return unclaimed - counted;
}

std::vector<Usage> ChildrenCharge::takeDebts() {
  std::vector<Usage> all;
  for (const Debt& debt : debts_)
    all.push_back(debt.seen);
  debts_.clear();
  return all;
}

}  // namespace tidewell
