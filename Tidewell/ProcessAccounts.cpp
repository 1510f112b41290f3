#include "Tidewell/ProcessAccounts.h"

#include <utility>

namespace tidewell {
namespace {

/// Far more than end between two measurements.
constexpr std::size_t kMostEnded = 2048;

}  // namespace

void ProcessAccounts::assign(std::int32_t pid, std::int32_t account) {
  const std::lock_guard lock(mutex_);
  entries_[pid] = {account, false};
}

void ProcessAccounts::noteEnd(std::int32_t pid) {
  const std::lock_guard lock(mutex_);
  const auto entry = entries_.find(pid);
  if (entry == entries_.end()) return;
  entry->second.hasEnded = true;
  ended_.push_back(pid);
  if (ended_.size() <= kMostEnded) return;
  const auto oldest = entries_.find(ended_.front());
  if (oldest != entries_.end() && oldest->second.hasEnded) entries_.erase(oldest);
  ended_.pop_front();
}

std::optional<std::int32_t> ProcessAccounts::accountOf(std::int32_t pid) const {
  const std::lock_guard lock(mutex_);
  const auto entry = entries_.find(pid);
  return entry == entries_.end() ? std::nullopt : std::optional(entry->second.account);
}

void ProcessAccounts::noteUse(std::int32_t account) {
  const std::lock_guard lock(mutex_);
  used_.push_back(account);
}

std::vector<std::int32_t> ProcessAccounts::takeUsed() {
  const std::lock_guard lock(mutex_);
  return std::exchange(used_, {});
}

}  // namespace tidewell
