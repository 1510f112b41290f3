#include "Tidewell/Accounting/AccountDirectory.h"

#include <algorithm>
#include <utility>

namespace tidewell {

/// The entry of `pid`, or the end of the list.
std::vector<AccountDirectory::Entry>::const_iterator AccountDirectory::find(
    std::int32_t pid) const {
  const auto entry = std::ranges::lower_bound(entries_, pid, {}, &Entry::pid);
  return entry == entries_.end() || entry->pid != pid ? entries_.end() : entry;
}

void AccountDirectory::assign(std::int32_t pid, std::int32_t account) {
  const std::lock_guard lock(mutex_);
  const auto entry = std::ranges::lower_bound(entries_, pid, {}, &Entry::pid);
  if (entry != entries_.end() && entry->pid == pid) {
    *entry = {pid, account, 0};
  } else {
    entries_.insert(entry, {pid, account, 0});
  }
}

void AccountDirectory::noteEnd(std::int32_t pid) {
  const std::lock_guard lock(mutex_);
  const auto entry = std::ranges::lower_bound(entries_, pid, {}, &Entry::pid);
  if (entry == entries_.end() || entry->pid != pid) return;
  entry->end = ++ends_;
  ended_.push_back({pid, ends_});
  if (ended_.size() <= kMostEnded) return;
  const End oldest = ended_.front();
  ended_.pop_front();
  // Another process may have had the number since then, and may have ended as well.
  const auto former = find(oldest.pid);
  if (former != entries_.end() && former->end == oldest.number) entries_.erase(former);
}

std::optional<std::int32_t> AccountDirectory::accountOf(std::int32_t pid) const {
  const std::lock_guard lock(mutex_);
  const auto entry = find(pid);
  return entry == entries_.end() ? std::nullopt : std::optional(entry->account);
}

void AccountDirectory::noteUse(std::int32_t account) {
  const std::lock_guard lock(mutex_);
  used_.push_back(account);
}

std::vector<std::int32_t> AccountDirectory::takeUsed() {
  const std::lock_guard lock(mutex_);
  return std::exchange(used_, {});
}

}  // namespace tidewell
