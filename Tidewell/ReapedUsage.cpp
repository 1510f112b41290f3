#include "Tidewell/ReapedUsage.h"

#include <algorithm>
#include <utility>

namespace tidewell {

void ReapedUsage::grow(std::uint64_t reapedTime, std::uint64_t disk) {
  time_ += static_cast<std::int64_t>(reapedTime);
  disk_ += disk;
}

bool ReapedUsage::claim(const Usage& seen, std::uint64_t tolerance) {
  const auto wanted = static_cast<std::int64_t>(seen.time);
  if (time_ + static_cast<std::int64_t>(tolerance) < wanted) return false;
  time_ -= wanted;
  claimedDisk_ += seen.disk;
  return true;
}

void ReapedUsage::claimOnNext(const Usage& seen) {
  debts_.push_back({seen});
}

Usage ReapedUsage::settle(std::uint64_t most, std::uint64_t tolerance) {
  std::erase_if(debts_, [&](Debt& debt) {
    // On its second pass it is in here, or it never will be.
    if (debt.isOld) claim(debt.seen, tolerance);
    return std::exchange(debt.isOld, true);
  });
  const std::uint64_t time = time_ > 0 ? static_cast<std::uint64_t>(time_) : 0;
  time_ -= static_cast<std::int64_t>(time);
  // The two counters are read one after the other, so a claim may be ahead of the growth.
  const std::uint64_t counted = std::min(disk_, claimedDisk_);
  const Usage all{time, disk_ - counted};
  claimedDisk_ -= counted;
  disk_ = 0;
  return time > most ? all.part(most) : all;
}

std::vector<Usage> ReapedUsage::takeDebts() {
  std::vector<Usage> all;
  for (const Debt& debt : debts_)
    all.push_back(debt.seen);
  debts_.clear();
  return all;
}

}  // namespace tidewell
