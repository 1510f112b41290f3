#include "Tidewell/Accounting/AccountDirectory.h"

#include <utility>

namespace tidewell {

void AccountDirectory::assign(std::int32_t pid, std::int32_t account) {
  const std::lock_guard lock(mutex_);
  entries_[pid] = {account, 0};
}

void AccountDirectory::noteEnd(std::int32_t pid) {
  const std::lock_guard lock(mutex_);
  const auto entry = entries_.find(pid);
  if (entry == entries_.end()) return;
  entry->second.end = ++ends_;
  ended_.push_back({pid, ends_});
  if (ended_.size() <= kMostEnded) return;
  const End oldest = ended_.front();
  ended_.pop_front();
  // Its number may have been given out again, and that process may have ended as well.
  const auto former = entries_.find(oldest.pid);
  if (former != entries_.end() && former->second.end == oldest.number) entries_.erase(former);
}

std::optional<std::int32_t> AccountDirectory::accountOf(std::int32_t pid) const {
  const std::lock_guard lock(mutex_);
  const auto entry = entries_.find(pid);
  return entry == entries_.end() ? std::nullopt : std::optional(entry->second.account);
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
