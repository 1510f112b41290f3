#pragma once

#include <memory>

#include "Tidewell/Ports/NetworkMeter.h"
#include "Tidewell/Ports/SerialQueue.h"

namespace tidewell {

/// Measures the network traffic of every process off the main thread.
///
/// Owned by the activity monitor. `refresh` and `currentTotals` may be called from any one thread
/// and return at once; the measurement runs on a private serial queue, at most once at a time. Both
/// ports must outlive the sampler. A measurement that fails keeps the totals of the one before, and
/// is logged if the meter tells why it failed.
class NetworkSampler {
 public:
  NetworkSampler(NetworkMeter& meter, SerialQueues& queues);
  ~NetworkSampler();
  NetworkSampler(const NetworkSampler&) = delete;
  NetworkSampler& operator=(const NetworkSampler&) = delete;

  /// Schedules one measurement, unless one is scheduled or under way already.
  void refresh();

  /// The totals of the last measurement that succeeded; empty before the first has.
  [[nodiscard]] NetworkTotals currentTotals() const;

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
  std::unique_ptr<SerialQueue> queue_;
};

}  // namespace tidewell
