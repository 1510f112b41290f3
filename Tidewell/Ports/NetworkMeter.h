#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

namespace tidewell {

/// Cumulative network bytes, received plus sent, by process identifier.
using NetworkTotals = std::unordered_map<std::int32_t, std::uint64_t>;

/// Lets one thread end what another thread is doing. Safe from any thread. A cancellation
/// cannot be undone.
class Cancellation {
 public:
  void cancel() {
    const std::lock_guard guard(lock_);
    isCancelled_ = true;
    if (action_) action_();
  }

  [[nodiscard]] bool isCancelled() const {
    const std::lock_guard guard(lock_);
    return isCancelled_;
  }

  /// From now on `cancel` runs `action`, in place of any former action. An empty action runs
  /// nothing. Once this function has returned, no former action runs any more. Returns false, and
  /// never runs `action`, when `cancel` was called before. `action` must not use this object: it
  /// would wait for itself.
  bool onCancel(std::function<void()> action) {
    const std::lock_guard guard(lock_);
    action_ = isCancelled_ ? nullptr : std::move(action);
    return !isCancelled_;
  }

 private:
  mutable std::mutex lock_;
  std::function<void()> action_;
  bool isCancelled_ = false;
};

/// What one measurement of the network found.
struct NetworkMeasurement {
  std::optional<NetworkTotals> totals;  ///< Absent when the measurement failed.
  /// Why it failed, for people to read; empty when there is nothing to tell.
  std::string error;
};

/// Counts the network bytes of every process.
///
/// One thread at a time may use it, and not the main thread, because a measurement may take
/// seconds.
class NetworkMeter {
 public:
  virtual ~NetworkMeter() = default;

  /// Measures once. When `cancellation` is cancelled, a long measurement ends soon, and nobody
  /// reads its result.
  virtual NetworkMeasurement measure(Cancellation& cancellation) = 0;
};

}  // namespace tidewell
