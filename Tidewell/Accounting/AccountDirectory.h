#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace tidewell {

/// Tells under which account a process is counted, so that what is measured elsewhere and later,
/// like network traffic, can be counted there from the beginning and stays when the process ends.
///
/// Written by whoever keeps the accounts, read by who measures. Safe from any thread.
class AccountDirectory {
 public:
  /// Far more than end between two measurements.
  static constexpr std::size_t kMostEnded = 2048;

  /// The process goes by `account` from now on; another may have had its number before.
  void assign(std::int32_t pid, std::int32_t account);

  /// The process has ended. Its account can be had for a while longer: until `kMostEnded` others
  /// have ended, or the number is another process's.
  void noteEnd(std::int32_t pid);

  /// Absent for a process that is not known, or ended long ago.
  [[nodiscard]] std::optional<std::int32_t> accountOf(std::int32_t pid) const;

  /// Something is counted under `account`, so that it must be listed.
  void noteUse(std::int32_t account);

  /// The accounts that `noteUse` was told of since the last call, in any order; some may come
  /// twice.
  [[nodiscard]] std::vector<std::int32_t> takeUsed();

 private:
  struct Entry {
    std::int32_t pid = 0;
    std::int32_t account = 0;
    std::uint64_t end = 0;  ///< Which of all ends was its; 0 while it lives.
  };
  struct End {
    std::int32_t pid = 0;
    std::uint64_t number = 0;
  };

  [[nodiscard]] std::vector<Entry>::const_iterator find(std::int32_t pid) const;

  mutable std::mutex mutex_;
  std::vector<Entry> entries_;  ///< Ascending by pid.
  std::uint64_t ends_ = 0;
  std::deque<End> ended_;  ///< The latest last; the numbers of some may have been given out again.
  std::vector<std::int32_t> used_;
};

}  // namespace tidewell
