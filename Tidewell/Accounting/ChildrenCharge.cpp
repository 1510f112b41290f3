#include "Tidewell/Accounting/ChildrenCharge.h"

#include <algorithm>
#include <utility>

namespace tidewell {
namespace {

/// A process that is never read is never settled, and its debts wait for its end.
constexpr std::size_t kMostDebts = 256;

}  // namespace

ChildrenCharge::Charge& ChildrenCharge::charge() {
  if (!charge_) charge_ = std::make_unique<Charge>();
  return *charge_;
}

void ChildrenCharge::grow(std::uint64_t reapedTime, std::uint64_t disk) {
  if (reapedTime == 0 && disk == 0) return;
  Charge& charge = this->charge();
  charge.time += static_cast<std::int64_t>(reapedTime);
  charge.disk += disk;
  if (reapedTime > 0) charge.mayHaveOthersDisk = true;
}

void ChildrenCharge::begin(std::uint64_t reapedTime, std::uint64_t disk) {
  grow(reapedTime, disk);
  charge().mayHaveOthersDisk = true;
  for (Debt& debt : charge().debts)
    debt.isOld = true;
}

bool ChildrenCharge::claim(const Usage& seen, std::uint64_t tolerance) {
  const auto wanted = static_cast<std::int64_t>(seen.time);
  const std::int64_t time = charge_ ? charge_->time : 0;
  if (time + static_cast<std::int64_t>(tolerance) < wanted) return false;
  if (seen == Usage()) return true;
  charge().time -= wanted;
  charge().claimedDisk += seen.disk;
  return true;
}

void ChildrenCharge::claimOnNext(const Usage& seen) {
  std::vector<Debt>& debts = charge().debts;
  if (debts.size() >= kMostDebts) {
    debts[1].seen += debts[0].seen;
    debts.erase(debts.begin());
  }
  debts.push_back({seen});
}

Usage ChildrenCharge::settle(const Usage& most, std::uint64_t tolerance) {
  if (!charge_) return {};
  std::erase_if(charge_->debts, [&](Debt& debt) {
    // On its second pass it is in here, or it never will be.
    if (debt.isOld) claim(debt.seen, tolerance);
    return std::exchange(debt.isOld, true);
  });
  const std::uint64_t time = charge_->time > 0 ? static_cast<std::uint64_t>(charge_->time) : 0;
  charge_->time -= static_cast<std::int64_t>(time);
  const std::uint64_t claimedDisk = std::exchange(charge_->claimedDisk, 0);
  std::uint64_t disk = std::exchange(charge_->disk, 0);
  disk -= std::min(disk, claimedDisk);
  if (std::exchange(charge_->mayHaveOthersDisk, false)) disk = std::min(disk, most.disk);
  if (*charge_ == Charge()) charge_.reset();
  return {std::min(time, most.time), disk};
}

std::vector<Usage> ChildrenCharge::takeDebts() {
  std::vector<Usage> all;
  if (!charge_) return all;
  for (const Debt& debt : charge_->debts)
    all.push_back(debt.seen);
  charge_->debts.clear();
  return all;
}

}  // namespace tidewell
