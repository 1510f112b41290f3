#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

namespace tidewell {

/// Remembers for a while under which account an ended process goes on being counted, so that what
/// it moved over the network can be counted there too. Safe from any thread.
class EndedProcesses {
 public:
  void add(std::int32_t pid, std::int32_t account);

  /// The account of the last process under that number; absent when none ended of late.
  [[nodiscard]] std::optional<std::int32_t> accountOf(std::int32_t pid) const;

 private:
  struct Entry {
    std::int32_t pid;
    std::int32_t account;
  };

  mutable std::mutex mutex_;
  std::deque<Entry> entries_;  ///< The latest last.
};

}  // namespace tidewell
