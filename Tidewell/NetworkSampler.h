#pragma once

#include <memory>

#include "Tidewell/Ports/NetworkMeter.h"
#include "Tidewell/Ports/SerialQueue.h"

namespace tidewell {

/// Measures the network traffic of every process off the main thread.
///
/// Owned by the activity monitor. One thread at a time may call `refresh` and `currentTotals`,
/// which return at once. The measurement runs on a private serial queue, and never twice at a time.
/// Both ports must outlive the sampler. After a measurement that failed, the totals of the one
/// before stay, and the failure is logged if the meter tells why.
class NetworkSampler {
 public:
  NetworkSampler(NetworkMeter& meter, SerialQueues& queues);
  ~NetworkSampler();
  NetworkSampler(const NetworkSampler&) = delete;
  NetworkSampler& operator=(const NetworkSampler&) = delete;

  /// Schedules one measurement, unless one is scheduled or under way already.
  void refresh();

  /// The totals of the last measurement that succeeded; empty before there was one.
  [[nodiscard]] NetworkTotals currentTotals() const;

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
  std::unique_ptr<SerialQueue> queue_;
};

}  // namespace tidewell
