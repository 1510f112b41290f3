#pragma once

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace tidewell {

/// The calls to all fakes that share this log, in order, for tests of what happens before what.
/// Safe from any thread.
class CallLog {
 public:
  void add(std::string call) {
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
  }

  void clear() {
    const std::lock_guard lock(mutex_);
    calls_.clear();
  }

  [[nodiscard]] std::vector<std::string> all() const {
    const std::lock_guard lock(mutex_);
    return calls_;
  }

  [[nodiscard]] std::size_t count(const std::string& call) const {
    return static_cast<std::size_t>(std::ranges::count(all(), call));
  }

  /// The calls that are among `wanted`, in the order in which they came.
  [[nodiscard]] std::vector<std::string> only(const std::vector<std::string>& wanted) const {
    std::vector<std::string> calls = all();
    std::erase_if(calls, [&wanted](const std::string& call) {
      return std::ranges::find(wanted, call) == wanted.end();
    });
    return calls;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
};

}  // namespace tidewell
