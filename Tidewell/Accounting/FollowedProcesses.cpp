#include "Tidewell/Accounting/FollowedProcesses.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tidewell {
namespace {

bool isGoneFrom(const std::vector<FollowedProcess>& gone, std::int32_t pid) {
  return std::ranges::binary_search(gone, pid, {}, &FollowedProcess::pid);
}

}  // namespace

FollowedProcesses::FollowedProcesses(ProcessTable& table, UsageByName& usage, std::int32_t self)
    : table_(table), usage_(usage), self_(self) {}

void FollowedProcesses::read(std::span<const std::int32_t> pids,
                             std::span<const Application> applications, const Usage& most) {
  most_ = most;
  order_.assign(pids.begin(), pids.end());
  if (std::ranges::is_sorted(pids)) {
    readAll(pids, applications);
  } else {
    std::vector<std::int32_t> ascending = order_;
    std::ranges::sort(ascending);
    readAll(ascending, applications);
  }
  findReapedMeanwhile();
  removeEnded();
  isPrimed_ = true;
  cursor_ = 0;
}

void FollowedProcesses::readAll(std::span<const std::int32_t> ascending,
                                std::span<const Application> applications) {
  static const Application none;
  if (living_.empty()) born_.reserve(ascending.size());
  auto known = living_.begin();
  auto application = applications.begin();
  for (const std::int32_t pid : ascending) {
    while (known != living_.end() && known->pid < pid)
      miss(*known++);
    while (application != applications.end() && (*application)->processIdentifier() < pid)
      ++application;
    // If there are several applications with one identifier, the last one counts.
    const Application* owner = &none;
    while (application != applications.end() && (*application)->processIdentifier() == pid)
      owner = &*application++;
    const bool isKnown = known != living_.end() && known->pid == pid;
    readOne(pid, isKnown ? &*known++ : nullptr, *owner);
  }
  while (known != living_.end())
    miss(*known++);
}

/// A known process is not listed. It has ended, unless the table could not list it. If it were
/// taken for ended then, all its usage would be counted once more on the next pass.
void FollowedProcesses::miss(FollowedProcess& process) {
  process.reapedSome = false;
  process.unread = true;
  process.ended = !table_.isAlive(process.pid);
  if (!process.ended) order_.push_back(process.pid);
}

void FollowedProcesses::readOne(std::int32_t pid, FollowedProcess* known,
                                const Application& application) {
  ResourceUsage usage;
  const bool readable = table_.resourceUsage(pid, usage);
  if (known && !readable) return noteUnread(*known, usage);
  if (!readable) return;
  const bool isSame =
      known && (known->startTime == usage.startTime || (known->hidden && known->startTime == 0));
  if (isSame && known->hidden) return begin(*known, usage, application);
  if (isSame) return usage_.count(*known, usage, application);
  if (known) {
    known->reapedSome = false;
    known->ended = true;
  }
  FollowedProcess& process = born_.emplace_back();
  process.pid = pid;
  begin(process, usage, application);
}

void FollowedProcesses::begin(FollowedProcess& process, const ResourceUsage& usage,
                              const Application& application) {
  process.hidden = process.unread = false;
  process.parent = table_.parent(process.pid);
  process.relation = relationOf(process);
  if (isPrimed_) {
    usage_.beginWithMost(process, usage, application, most_);
  } else {
    usage_.beginWithAll(process, usage, application);
  }
  newParents_.push_back(process.parent);
}

/// A child that is older than the first pass was not started as a tool. The children of the first
/// process of a system are the orphans of all others.
Relation FollowedProcesses::relationOf(const FollowedProcess& process) {
  if (process.pid == self_) return Relation::self;
  if (!isPrimed_ || self_ <= 1) return Relation::stranger;
  if (process.parent == self_) return Relation::tool;
  const FollowedProcess* parent = findProcess(born_, process.parent);
  if (!parent) parent = findProcess(living_, process.parent);
  return parent && parent->relation == Relation::tool ? Relation::tool : Relation::stranger;
}

/// A process that is there, but may not be read any more, keeps what it had.
void FollowedProcesses::noteUnread(FollowedProcess& process, const ResourceUsage& usage) {
  const bool isAnother =
      usage.startTime != 0 && process.startTime != 0 && usage.startTime != process.startTime;
  process.reapedSome = false;
  process.unread = true;
  process.ended = isAnother || !table_.isAlive(process.pid);
}

/// A child that was read may have been reaped before its parent was read. What had been seen of the
/// child is in both readings then, so the child is taken for ended.
void FollowedProcesses::findReapedMeanwhile() {
  // The children of a process that ended may have ended with it, and their children as well.
  std::vector<std::int32_t> parents;
  for (const std::vector<FollowedProcess>* list : {&living_, &born_}) {
    for (const FollowedProcess& process : *list) {
      if (process.reapedSome || process.ended) parents.push_back(process.pid);
    }
  }
  while (!parents.empty()) {
    std::ranges::sort(parents);
    parents = endChildrenOf(parents);
  }
}

/// Finds out which children of `parents` have ended. `parents` must be ascending.
std::vector<std::int32_t> FollowedProcesses::endChildrenOf(
    const std::vector<std::int32_t>& parents) {
  std::vector<std::int32_t> ended;
  for (std::vector<FollowedProcess>* list : {&living_, &born_}) {
    for (FollowedProcess& process : *list) {
      if (process.ended || !std::ranges::binary_search(parents, process.parent)) continue;
      process.ended = !table_.isAlive(process.pid);
      if (process.ended) ended.push_back(process.pid);
    }
  }
  for (const std::int32_t pid : ended)
    std::erase(order_, pid);
  return ended;
}

/// Moves the processes that ended to `gone_`, and the new ones to `living_`.
void FollowedProcesses::removeEnded() {
  for (std::vector<FollowedProcess>* list : {&living_, &born_}) {
    const auto firstEnded = std::ranges::find(*list, true, &FollowedProcess::ended);
    auto end = firstEnded;
    for (auto process = firstEnded; process != list->end(); ++process) {
      if (process->ended) {
        gone_.push_back(std::move(*process));
      } else {
        *end++ = std::move(*process);
      }
    }
    list->erase(end, list->end());
  }
  std::ranges::stable_sort(gone_, {}, &FollowedProcess::pid);
  if (living_.empty()) living_.swap(born_);
  if (born_.empty()) return;
  const auto known = static_cast<std::ptrdiff_t>(living_.size());
  std::ranges::move(born_, std::back_inserter(living_));
  born_.clear();
  std::ranges::inplace_merge(living_, living_.begin() + known, {}, &FollowedProcess::pid);
}

void FollowedProcesses::updateParents() {
  if (!gone_.empty()) {
    std::int32_t livingParent = 0;  // Many processes in a row have the same parent.
    for (FollowedProcess& process : living_) {
      if (process.parent > 0 && process.parent == livingParent) continue;
      // A process that had just been born may not have told its parent yet.
      const bool isKnown = process.parent <= 0 ? !process.hidden : find(process.parent) != nullptr;
      if (isKnown && !isGoneFrom(gone_, process.parent)) {
        livingParent = process.parent;
        continue;
      }
      process.parent = table_.parent(process.pid);
      newParents_.push_back(process.parent);
    }
  }
  followHiddenParents();
}

void FollowedProcesses::followHiddenParents() {
  // A hidden parent may have a hidden parent itself.
  while (!newParents_.empty()) {
    const std::int32_t pid = newParents_.back();
    newParents_.pop_back();
    // Nobody reaps the first process, so its charge never comes to light.
    if (pid > 1 && !find(pid) && table_.isAlive(pid)) followHidden(pid);
  }
}

void FollowedProcesses::followHidden(std::int32_t pid) {
  ResourceUsage usage;
  // A process that can be read was born after the list was made. The next pass will list it.
  if (table_.resourceUsage(pid, usage)) return;
  FollowedProcess process;
  process.pid = pid;
  process.parent = table_.parent(pid);
  process.startTime = usage.startTime;
  process.hidden = process.unread = true;
  newParents_.push_back(process.parent);
  living_.insert(std::ranges::lower_bound(living_, pid, {}, &FollowedProcess::pid),
                 std::move(process));
}

FollowedProcess* FollowedProcesses::find(std::int32_t pid) {
  // Callers ask in ascending order, and several times for one process. So the answer is the last
  // entry or the next.
  if (cursor_ < living_.size() && living_[cursor_].pid < pid) ++cursor_;
  if (cursor_ >= living_.size() || living_[cursor_].pid != pid) {
    const auto found = std::ranges::lower_bound(living_, pid, {}, &FollowedProcess::pid);
    if (found == living_.end() || found->pid != pid) return nullptr;
    cursor_ = static_cast<std::size_t>(found - living_.begin());
  }
  return &living_[cursor_];
}

}  // namespace tidewell
