#include "Tidewell/Accounting/GroupBalance.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace tidewell {

void GroupBalance::settle(std::vector<FollowedProcess>& living, std::vector<FollowedProcess>& gone,
                          const Terms& terms) {
  ++pass_;
  for (auto& [number, group] : byNumber_)
    group.reaped = 0;
  collect(living, true);
  collect(gone, false);
  if (groups_.mayHaveUnseen() || !gone.empty()) settleGroups(living, gone, terms);
  if (!std::exchange(someReaped_, false)) return;
  for (FollowedProcess& process : living)
    process.passReaped = 0;
}

void GroupBalance::settleGroups(std::vector<FollowedProcess>& living,
                                std::vector<FollowedProcess>& gone, const Terms& terms) {
  // All are credited before anything is taken back, because that is limited by the credits.
  read(Which::ran);
  creditAll(living, terms);
  if (someReaped_ && foreignCharge(living, gone, terms) > credited_) {
    read(Which::all);
    creditAll(living, terms);
  }
  for (auto& [number, group] : byNumber_) {
    if (group.unseen >= -terms.tolerance) continue;
    explain(number, group, living, gone);
    group.unseen = std::max(group.unseen, -static_cast<std::int64_t>(terms.most));
  }
  for (std::vector<FollowedProcess>* processes : {&living, &gone}) {
    for (FollowedProcess& process : *processes) {
      if (isForeignManager(process, living)) takeBack(process, credited_);
    }
  }
  forgetThoseLeft(living, gone);
}

/// Takes what was counted for the processes on this pass out of what their groups used unseen.
void GroupBalance::collect(std::vector<FollowedProcess>& processes, bool areLiving) {
  for (FollowedProcess& process : processes) {
    const std::uint64_t time = std::exchange(process.passTime, 0);
    const bool isNew = process.group == FollowedProcess::kUnknownGroup;
    if (areLiving && time == 0 && !isNew) continue;
    someReaped_ = someReaped_ || process.passReaped > 0;
    if (areLiving || isNew) findGroup(process);
    if (process.group <= 0) continue;
    Group& group = byNumber_[process.group];
    group.ran = true;
    group.isLeftOut = group.isLeftOut || process.relation != Relation::stranger;
    // What a process without a name has used counts for nobody.
    if (process.account != 0) group.unseen -= static_cast<std::int64_t>(time);
    group.reaped += process.passReaped;
  }
}

void GroupBalance::findGroup(FollowedProcess& process) {
  const std::int32_t former = std::exchange(process.group, groups_.groupOf(process.pid));
  if (former == process.group || former == FollowedProcess::kUnknownGroup) return;
  noteMove(former);
  noteMove(process.group);
}

/// A member was moved. Nobody knows in which group it has used what was counted for it since.
void GroupBalance::noteMove(std::int32_t number) {
  perhapsLeft_.insert(number);
  const auto group = byNumber_.find(number);
  if (group != byNumber_.end()) group->second.hasMoved = true;
}

void GroupBalance::read(Which which) {
  for (auto entry = byNumber_.begin(); entry != byNumber_.end();) {
    auto& [number, group] = *entry;
    const bool isUnread = which == Which::all && group.lastRead != pass_;
    const bool isDue = std::exchange(group.ran, false) || isUnread;
    const auto time = isDue ? groups_.timeOf(number) : std::nullopt;
    if (time) read(group, *time);
    entry = isDue && !time ? byNumber_.erase(entry) : std::next(entry);
  }
}

void GroupBalance::read(Group& group, std::uint64_t time) {
  const std::uint64_t before = std::exchange(group.time, time);
  group.unseen += static_cast<std::int64_t>(time - std::min(before, time));
  const bool isFirst = !std::exchange(group.wasRead, true);
  const bool hasMoved = std::exchange(group.hasMoved, false);
  if (isFirst || hasMoved || group.isLeftOut) group.unseen = 0;
  // A hidden process may have used it on the passes between, and have ended.
  const bool isOld = std::exchange(group.lastRead, pass_) + 1 != pass_;
  if (isOld) group.unseen = std::min<std::int64_t>(group.unseen, 0);
  if (group.unseen <= 0) group.wasDenied = false;
}

void GroupBalance::creditAll(std::vector<FollowedProcess>& living, const Terms& terms) {
  for (auto& [number, group] : byNumber_) {
    if (group.unseen > terms.tolerance) credit(number, group, living, terms.most);
  }
}

/// What reapers were charged for members of other groups.
std::uint64_t GroupBalance::foreignCharge(const std::vector<FollowedProcess>& living,
                                          const std::vector<FollowedProcess>& gone,
                                          const Terms& terms) const {
  std::uint64_t charge = 0;
  for (const auto& [number, group] : byNumber_) {
    const bool isForeign = group.reaped > 0 && group.unseen < -terms.tolerance;
    if (isForeign) charge += static_cast<std::uint64_t>(-group.unseen);
  }
  for (const std::vector<FollowedProcess>* processes : {&living, &gone}) {
    for (const FollowedProcess& process : *processes) {
      if (isForeignManager(process, living)) charge += process.passReaped;
    }
  }
  return charge;
}

void GroupBalance::credit(std::int32_t number, Group& group, std::vector<FollowedProcess>& living,
                          std::uint64_t most) {
  FollowedProcess* oldest = nullptr;
  for (FollowedProcess& process : living) {
    const bool isMember = process.account != 0 && groups_.groupOf(process.pid) == number;
    if (isMember && (!oldest || process.startTime < oldest->startTime)) oldest = &process;
  }
  const auto unseen = static_cast<std::uint64_t>(std::exchange(group.unseen, 0));
  if (!oldest) return;
  const bool isDenied = !groups_.hasOnlyKnownMembers(number);
  const bool wasDenied = std::exchange(group.wasDenied, isDenied);
  if (isDenied || wasDenied) return;
  const std::uint64_t time = std::min(unseen, most - std::min(most, group.reaped));
  oldest->counted.time += time;
  credited_ = std::min(credited_ + time, most);
}

/// More was counted than used. If nothing tells why, it is taken for a difference of the readings,
/// and the next readings make up for it.
void GroupBalance::explain(std::int32_t number, Group& group, std::vector<FollowedProcess>& living,
                           std::vector<FollowedProcess>& gone) {
  if (!group.wasRead) {
    group.unseen = 0;
  } else if (group.reaped > 0) {
    takeBack(number, group, living);
    takeBack(number, group, gone);
    group.unseen = 0;
  } else if (readMembersAnew(number, living)) {
    group.unseen = 0;
  }
}

void GroupBalance::takeBack(std::int32_t number, Group& group,
                            std::vector<FollowedProcess>& processes) {
  for (FollowedProcess& process : processes) {
    if (process.group != number || group.unseen >= 0) continue;
    const std::uint64_t time = takeBack(process, static_cast<std::uint64_t>(-group.unseen));
    group.unseen += static_cast<std::int64_t>(time);
  }
}

/// Whether a process reaped some, is in no group that can be read, and has a child in one, as a
/// service manager has. Nobody knows how much of its charge is that of other groups. A build in a
/// group that cannot be read has no such child.
bool GroupBalance::isForeignManager(const FollowedProcess& reaper,
                                    const std::vector<FollowedProcess>& living) const {
  if (reaper.passReaped == 0 || byNumber_.contains(reaper.group)) return false;
  return std::ranges::any_of(living, [&](const FollowedProcess& process) {
    return process.parent == reaper.pid && byNumber_.contains(process.group);
  });
}

std::uint64_t GroupBalance::takeBack(FollowedProcess& process, std::uint64_t most) {
  const std::uint64_t time = std::min({most, process.passReaped, process.counted.time, credited_});
  process.counted.time -= time;
  process.passReaped -= time;
  credited_ -= time;
  return time;
}

/// Whether any is in another group now.
bool GroupBalance::readMembersAnew(std::int32_t number, std::vector<FollowedProcess>& living) {
  bool hasMoved = false;
  for (FollowedProcess& process : living) {
    if (process.group != number) continue;
    process.group = groups_.readGroupOf(process.pid);
    if (process.group == number) continue;
    hasMoved = true;
    perhapsLeft_.insert(number);
    noteMove(process.group);
  }
  return hasMoved;
}

/// A group in which nobody is any more is never read again.
void GroupBalance::forgetThoseLeft(const std::vector<FollowedProcess>& living,
                                   const std::vector<FollowedProcess>& gone) {
  std::set<std::int32_t> left = std::exchange(perhapsLeft_, {});
  for (const FollowedProcess& process : gone)
    left.insert(process.group);
  for (const FollowedProcess& process : living) {
    if (left.empty()) return;
    left.erase(process.group);
  }
  for (const std::int32_t number : left)
    byNumber_.erase(number);
}

}  // namespace tidewell
