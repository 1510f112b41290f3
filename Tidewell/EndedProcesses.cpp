#include "Tidewell/EndedProcesses.h"

#include <algorithm>

namespace tidewell {
namespace {

/// Far more than end between two measurements of the network.
constexpr std::size_t kMostEntries = 2048;

}  // namespace

void EndedProcesses::add(std::int32_t pid, std::int32_t account) {
  const std::lock_guard lock(mutex_);
  entries_.push_back({pid, account});
  if (entries_.size() > kMostEntries) entries_.pop_front();
}

std::optional<std::int32_t> EndedProcesses::accountOf(std::int32_t pid) const {
  const std::lock_guard lock(mutex_);
  const auto last = std::find_if(entries_.rbegin(), entries_.rend(),
                                 [pid](const Entry& entry) { return entry.pid == pid; });
  return last == entries_.rend() ? std::nullopt : std::optional(last->account);
}

}  // namespace tidewell
