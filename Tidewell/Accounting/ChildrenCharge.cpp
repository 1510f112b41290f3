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

ChildrenCharge::Charge& ChildrenCharge::charge() {
  if (!charge_) charge_ = std::make_unique<Charge>();
  return *charge_;
}

void ChildrenCharge::grow(std::uint64_t reapedTime, std::uint64_t disk) {
  if (reapedTime == 0 && disk == 0) return;
  Charge& charge = this->charge();
  charge.time += static_cast<std::int64_t>(reapedTime);
  charge.disk += disk;
  if (reapedTime > 0) charge.settlementsWithOthers = kSettlementsWithOthers;
}

void ChildrenCharge::begin(std::uint64_t reapedTime, std::uint64_t disk) {
  grow(reapedTime, disk);
  charge().settlementsWithOthers = kSettlementsWithOthers;
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
  Usage all{time, takeUnclaimedDisk()};
  if (all.time > most.time) all = all.part(most.time);
  if (charge_->settlementsWithOthers > 0) {
    --charge_->settlementsWithOthers;
    all.disk = std::min(all.disk, most.disk);
  }
  if (*charge_ == Charge()) charge_.reset();
  return all;
}

/// The bytes that are not counted elsewhere. A claim may be ahead of the growth, so what is left of
/// the latest ones waits once more.
std::uint64_t ChildrenCharge::takeUnclaimedDisk() {
  std::uint64_t unclaimed = std::exchange(charge_->disk, 0);
  unclaimed -= std::min(unclaimed, charge_->formerClaimedDisk);
  const std::uint64_t counted = std::min(unclaimed, charge_->claimedDisk);
  charge_->formerClaimedDisk = std::exchange(charge_->claimedDisk, 0) - counted;
  return unclaimed - counted;
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
