#include "Tidewell/Accounting/ChargeSettlement.h"

#include <algorithm>
#include <span>

namespace tidewell {
namespace {

constexpr int kMostAncestors = 64;

}  // namespace

ChargeSettlement::ChargeSettlement(std::vector<FollowedProcess>& living,
                                   std::vector<FollowedProcess>& gone, Terms terms)
    : living_(living), gone_(gone), terms_(terms) {}

/// The parent of a process that ended; null if the parent has ended as well. Another process may
/// have the parent's number by now.
FollowedProcess* ChargeSettlement::livingParent(const FollowedProcess& ended) {
  const bool isGone = std::ranges::binary_search(gone_, ended.parent, {}, &FollowedProcess::pid);
  return isGone ? nullptr : findProcess(living_, ended.parent);
}

void ChargeSettlement::claim() {
  // A parent that lives is the reaper. The reapers of the others must be guessed.
  std::vector<const FollowedProcess*> unclaimed;
  for (const FollowedProcess& process : gone_) {
    FollowedProcess* parent = livingParent(process);
    if (parent && parent->reaped.claim(seenOf(process), terms_.tolerance)) {
      note(process, parent);
    } else {
      unclaimed.push_back(&process);
    }
  }
  // A parent that could not be read most likely has the charge, unseen. Its children come last.
  std::stable_partition(unclaimed.begin(), unclaimed.end(), [this](const FollowedProcess* process) {
    const FollowedProcess* parent = livingParent(*process);
    return !parent || !parent->unread;
  });
  for (const FollowedProcess* process : unclaimed)
    note(*process, claimFromAncestors(process->parent, seenOf(*process)));
  for (FollowedProcess& process : gone_) {
    for (const Usage& debt : process.reaped.takeDebts())
      claimFromAncestors(process.parent, debt);
  }
  std::ranges::stable_sort(claims_, {}, &Claim::reaper);
}

void ChargeSettlement::settle(FollowedProcess& reaper) {
  if (reaper.reaped.isNothing()) return;
  const Usage unseen = reaper.reaped.settle(terms_.most, terms_.tolerance);
  Usage rest = unseen;
  // Clang 14 cannot use the `subrange` that `equal_range` gives.
  const auto first = std::ranges::lower_bound(claims_, reaper.pid, {}, &Claim::reaper);
  const auto last = std::ranges::upper_bound(claims_, reaper.pid, {}, &Claim::reaper);
  const std::span<const Claim> claims(first, last);
  double seen = 0;
  for (const Claim& claim : claims)
    seen += static_cast<double>(gone_[claim.ended].seenTime());
  for (const Claim& claim : claims) {
    FollowedProcess& ended = gone_[claim.ended];
    const double share = static_cast<double>(ended.seenTime()) / std::max(seen, 1.0);
    const double most = std::min(static_cast<double>(unseen.time), seen);
    Usage stretch = unseen.part(std::min(rest.time, static_cast<std::uint64_t>(most * share)));
    stretch.disk = std::min(rest.disk, stretch.disk);
    ended.counted += stretch;
    ended.passTime += stretch.time;
    ended.passReaped += stretch.time;
    rest.time -= stretch.time;
    rest.disk -= stretch.disk;
  }
  // The rest is the work of tools that came and went unseen.
  const bool reapedTools = reaper.relation == Relation::self && rest.time > 0;
  if (reapedTools) return;
  reaper.counted += rest;
  reaper.passTime += rest.time;
  reaper.passReaped += rest.time;
}

/// Claims from the first ancestor that has the charge; null if none has. A process whose parent has
/// ended too was reaped by the parent, or by the heir of the parent. In either case the charge has
/// gone up the line of ancestors.
FollowedProcess* ChargeSettlement::claimFromAncestors(std::int32_t ancestor, const Usage& seen) {
  FollowedProcess* nearest = nullptr;
  for (int step = 0; ancestor > 0 && step < kMostAncestors; ++step) {
    const auto gone = std::ranges::lower_bound(gone_, ancestor, {}, &FollowedProcess::pid);
    const bool isGone = gone != gone_.end() && gone->pid == ancestor;
    FollowedProcess* process = isGone ? &*gone : findProcess(living_, ancestor);
    if (!process) break;
    // An ancestor that has ended may have been read after it reaped and before it ended.
    const bool mayHaveIt = !isGone || process->reapedSome;
    if (mayHaveIt && process->reaped.claim(seen, terms_.tolerance)) return process;
    if (!isGone && !nearest) nearest = process;
    ancestor = process->parent;
  }
  // The reaper was read before it reaped.
  if (nearest) nearest->reaped.claimOnNext(seen);
  return nullptr;
}

void ChargeSettlement::note(const FollowedProcess& ended, const FollowedProcess* reaper) {
  if (reaper) claims_.push_back({reaper->pid, static_cast<std::size_t>(&ended - gone_.data())});
}

Usage ChargeSettlement::seenOf(const FollowedProcess& process) const {
  const bool countsDisk = terms_.includesDisk && process.isSeen();
  return {process.seenTime(), countsDisk ? process.disk : 0};
}

}  // namespace tidewell
