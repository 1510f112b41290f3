#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace tidewell {

/// Tells under which account a process is counted. A measurement that runs elsewhere and later,
/// like that of network traffic, counts under this account from the beginning. So what it counts
/// stays when the process ends.
///
/// Whoever keeps the accounts writes; whoever measures reads. Safe from any thread.
class AccountDirectory {
 public:
  /// Far more processes than end between two measurements.
  static constexpr std::size_t kMostEnded = 2048;

  /// The process is counted under `account` from now on. Another process may have had its number
  /// before.
  void assign(std::int32_t pid, std::int32_t account);

  /// The process has ended. Its account is still told until `kMostEnded` others have ended, or
  /// until another process has the number.
  void noteEnd(std::int32_t pid);

  /// Absent for a process that is not known or that ended long ago.
  [[nodiscard]] std::optional<std::int32_t> accountOf(std::int32_t pid) const;

  /// Something is counted under `account`, so the account must be listed.
  void noteUse(std::int32_t account);

  /// The accounts that `noteUse` was called for since the last call of `takeUsed`, in any order. An
  /// account may come several times.
  [[nodiscard]] std::vector<std::int32_t> takeUsed();

 private:
  struct Entry {
    std::int32_t pid = 0;
    std::int32_t account = 0;
    std::uint64_t end = 0;  ///< The number of its end, counted over all ends; 0 while it lives.
  };
  struct End {
    std::int32_t pid = 0;
    std::uint64_t number = 0;
  };

  [[nodiscard]] std::vector<Entry>::const_iterator find(std::int32_t pid) const;

  mutable std::mutex mutex_;
  std::vector<Entry> entries_;  ///< Ascending by pid.
  std::uint64_t ends_ = 0;
  std::deque<End> ended_;  ///< The latest end comes last. A pid may have another process by now.
  std::vector<std::int32_t> used_;
};

}  // namespace tidewell
