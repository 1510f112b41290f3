#include "Platform/Linux/Network/SearchHistory.h"

#include <algorithm>
#include <utility>

namespace platform {

void SearchHistory::findCandidates(std::vector<std::int32_t>& candidates) {
  candidates.clear();
  holders_.listPids(pids_);
  std::ranges::sort(pids_);
  const std::vector<Entry> formerEntries = std::exchange(entries_, {});
  entries_.reserve(pids_.size());
  auto former = formerEntries.cbegin();
  for (const std::int32_t pid : pids_) {
    while (former != formerEntries.cend() && former->pid < pid)
      ++former;
    const bool isKnown = former != formerEntries.cend() && former->pid == pid;
    Entry entry = isKnown ? *former : Entry{};
    entry.pid = pid;
    entry.cpuTimeNow = holders_.cpuTime(pid).value_or(0);
    if (isCandidate(entry)) candidates.push_back(pid);
    entries_.push_back(entry);
  }
  std::ranges::reverse(candidates);
}

bool SearchHistory::isCandidate(const Entry& entry) {
  const bool hasRested = entry.cpuTimeNow != 0 && entry.cpuTimeNow == entry.cpuTimeWhenSearched;
  return !hasRested || !entry.searchedAtRest;
}

void SearchHistory::wasSearched(std::int32_t pid) {
  const auto entry = std::ranges::lower_bound(entries_, pid, {}, &Entry::pid);
  if (entry == entries_.end() || entry->pid != pid) return;
  entry->searchedAtRest = entry->cpuTimeNow != 0 && entry->cpuTimeNow == entry->cpuTimeWhenSearched;
  entry->cpuTimeWhenSearched = entry->cpuTimeNow;
}

}  // namespace platform
