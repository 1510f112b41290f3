#include "Tidewell/CountedProcesses.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tidewell {
namespace {

constexpr std::size_t kPidBytes = sizeof(std::int32_t);

bool isGoneFrom(const std::vector<CountedProcess>& gone, std::int32_t pid) {
  return std::ranges::binary_search(gone, pid, {}, &CountedProcess::pid);
}

}  // namespace

CountedProcesses::CountedProcesses(ProcessTable& table, ProcessCounter& counter)
    : table_(table), counter_(counter) {}

void CountedProcesses::read(std::span<const Application> applications, const Usage& most) {
  most_ = most;
  list();
  readAll(applications);
  findReapedMeanwhile();
  findReplaced();
  removeEnded();
  isPrimed_ = true;
  cursor_ = 0;
}

void CountedProcesses::list() {
  const int needed = table_.listPids({});
  order_.assign(needed < 1 ? 0 : static_cast<std::size_t>(needed) / kPidBytes, 0);
  const int written = order_.empty() ? 0 : table_.listPids(order_);
  order_.resize(
      std::min(order_.size(), static_cast<std::size_t>(std::max(written, 0)) / kPidBytes));
  ascending_ = order_;
  if (!std::ranges::is_sorted(ascending_)) std::ranges::sort(ascending_);
}

void CountedProcesses::readAll(std::span<const Application> applications) {
  static const Application none;
  auto known = living_.begin();
  auto application = applications.begin();
  for (const std::int32_t pid : ascending_) {
    while (known != living_.end() && known->pid < pid)
      miss(*known++);
    while (application != applications.end() && (*application)->processIdentifier() < pid)
      ++application;
    // Of several with one identifier the last counts.
    const Application* owner = &none;
    while (application != applications.end() && (*application)->processIdentifier() == pid)
      owner = &*application++;
    const bool isKnown = known != living_.end() && known->pid == pid;
    readOne(pid, isKnown ? &*known++ : nullptr, *owner);
  }
  while (known != living_.end())
    miss(*known++);
}

/// A process that is not listed has ended, or waits to be reaped where such ones are not listed.
void CountedProcesses::miss(CountedProcess& process) {
  process.reapedSome = false;
  process.unread = true;
  process.ended = !table_.isAlive(process.pid);
  if (!process.ended) order_.push_back(process.pid);
}

void CountedProcesses::readOne(std::int32_t pid, CountedProcess* known,
                               const Application& application) {
  ResourceUsage usage;
  const bool readable = table_.resourceUsage(pid, usage);
  if (known && !readable) return noteUnread(*known, usage);
  if (!readable) return;
  const bool isSame =
      known && (known->startTime == usage.startTime || (known->hidden && known->startTime == 0));
  if (isSame && known->hidden) return begin(*known, usage, application);
  if (isSame) return counter_.update(*known, usage, application);
  if (known) {
    known->reapedSome = false;
    known->ended = true;
  }
  CountedProcess& process = born_.emplace_back();
  process.pid = pid;
  begin(process, usage, application);
}

void CountedProcesses::begin(CountedProcess& process, const ResourceUsage& usage,
                             const Application& application) {
  process.hidden = process.unread = false;
  if (isPrimed_) {
    counter_.beginWithMost(process, usage, application, most_);
  } else {
    counter_.beginWithAll(process, usage, application);
  }
  newParents_.push_back(process.parent);
}

/// What may not be read any more, but is there, has what it had.
void CountedProcesses::noteUnread(CountedProcess& process, const ResourceUsage& usage) {
  const bool isAnother =
      usage.startTime != 0 && process.startTime != 0 && usage.startTime != process.startTime;
  process.reapedSome = false;
  process.unread = true;
  process.ended = isAnother || !table_.isAlive(process.pid);
}

/// Of one that cannot be read the start time may not be told either. Only the death of its parent
/// gives a process another; so if the parent lives, the number is another process's.
void CountedProcesses::findReplaced() {
  for (CountedProcess& process : living_) {
    if (!process.unread || process.ended) continue;
    const CountedProcess* parent = findProcess(living_, process.parent);
    if (!parent || parent->unread || parent->ended) continue;
    const std::int32_t now = table_.parent(process.pid);
    process.ended = now != 0 && now != process.parent;
  }
}

/// A child that was listed may have been reaped before its parent was read. What had been seen of
/// it is in both then, so it is taken for ended.
void CountedProcesses::findReapedMeanwhile() {
  // With a process that ended its children may have, and theirs.
  std::vector<std::int32_t> parents;
  for (const std::vector<CountedProcess>* list : {&living_, &born_}) {
    for (const CountedProcess& process : *list) {
      if (process.reapedSome || process.ended) parents.push_back(process.pid);
    }
  }
  while (!parents.empty()) {
    std::ranges::sort(parents);
    parents = endChildrenOf(parents);
  }
}

/// Looks which children of `parents`, ascending, have ended.
std::vector<std::int32_t> CountedProcesses::endChildrenOf(
    const std::vector<std::int32_t>& parents) {
  std::vector<std::int32_t> ended;
  for (std::vector<CountedProcess>* list : {&living_, &born_}) {
    for (CountedProcess& process : *list) {
      if (process.ended || !std::ranges::binary_search(parents, process.parent)) continue;
      process.ended = !table_.isAlive(process.pid);
      if (process.ended) ended.push_back(process.pid);
    }
  }
  for (const std::int32_t pid : ended)
    std::erase(order_, pid);
  return ended;
}

/// Moves what ended to `gone_`, and what is new among the others.
void CountedProcesses::removeEnded() {
  const auto isLive = [](const CountedProcess& process) { return !process.ended; };
  for (std::vector<CountedProcess>* list : {&living_, &born_}) {
    const auto ended = std::stable_partition(list->begin(), list->end(), isLive);
    std::move(ended, list->end(), std::back_inserter(gone_));
    list->erase(ended, list->end());
  }
  std::ranges::stable_sort(gone_, {}, &CountedProcess::pid);
  if (born_.empty()) return;
  const auto known = static_cast<std::ptrdiff_t>(living_.size());
  std::ranges::move(born_, std::back_inserter(living_));
  born_.clear();
  std::ranges::inplace_merge(living_, living_.begin() + known, {}, &CountedProcess::pid);
}

void CountedProcesses::updateParents() {
  if (!gone_.empty()) {
    for (CountedProcess& process : living_) {
      // One that had just been born may not have told yet who its parent is.
      const bool isKnown = process.parent <= 0 ? !process.hidden : find(process.parent) != nullptr;
      if (isKnown && !isGoneFrom(gone_, process.parent)) continue;
      process.parent = table_.parent(process.pid);
      newParents_.push_back(process.parent);
    }
  }
  followHiddenParents();
}

void CountedProcesses::followHiddenParents() {
  // Those that are followed now may have such parents as well.
  while (!newParents_.empty()) {
    const std::int32_t pid = newParents_.back();
    newParents_.pop_back();
    // To the first process all falls in the end, and nobody reaps it.
    if (pid > 1 && !find(pid) && table_.isAlive(pid)) followHidden(pid);
  }
}

void CountedProcesses::followHidden(std::int32_t pid) {
  ResourceUsage usage;
  // One that can be read was born after the list was made, and will be on the next.
  if (table_.resourceUsage(pid, usage)) return;
  CountedProcess process;
  process.pid = pid;
  process.parent = table_.parent(pid);
  process.startTime = usage.startTime;
  process.hidden = process.unread = true;
  newParents_.push_back(process.parent);
  living_.insert(std::ranges::lower_bound(living_, pid, {}, &CountedProcess::pid),
                 std::move(process));
}

CountedProcess* CountedProcesses::find(std::int32_t pid) {
  // Ascending questions, each asked several times, hit the same entry or the next.
  if (cursor_ < living_.size() && living_[cursor_].pid < pid) ++cursor_;
  if (cursor_ >= living_.size() || living_[cursor_].pid != pid) {
    const auto found = std::ranges::lower_bound(living_, pid, {}, &CountedProcess::pid);
    if (found == living_.end() || found->pid != pid) return nullptr;
    cursor_ = static_cast<std::size_t>(found - living_.begin());
  }
  return &living_[cursor_];
}

}  // namespace tidewell
