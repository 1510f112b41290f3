#include "Tidewell/NetworkSampler.h"

#include <mutex>
#include <utility>

#include "Tidewell/Log.h"

namespace tidewell {

/// What the sampler and its measurement share. A measurement that has not begun refers to it only
/// weakly, so that nothing stays alive once the sampler is gone.
struct NetworkSampler::Shared {
  explicit Shared(NetworkMeter& networkMeter) : meter(networkMeter) {}

  NetworkMeter& meter;
  Cancellation cancellation;
  std::mutex lock;  ///< Guards the rest. Never held while the meter measures.
  NetworkTotals latest;
  bool inFlight = false;

  void run();
};

NetworkSampler::NetworkSampler(NetworkMeter& meter, SerialQueues& queues)
    : shared_(std::make_shared<Shared>(meter)), queue_(queues.make("com.staylit.nettop")) {}

NetworkSampler::~NetworkSampler() {
  // A measurement that hangs must not keep the program from ending.
  shared_->cancellation.cancel();
  queue_.reset();
}

void NetworkSampler::refresh() {
  {
    const std::lock_guard guard(shared_->lock);
    if (std::exchange(shared_->inFlight, true)) return;
  }
  queue_->async([weak = std::weak_ptr(shared_)] {
    if (const auto shared = weak.lock()) shared->run();
  });
}

NetworkTotals NetworkSampler::currentTotals() const {
  const std::lock_guard guard(shared_->lock);
  return shared_->latest;
}

void NetworkSampler::Shared::run() {
  NetworkMeasurement measurement = meter.measure(cancellation);
  if (!measurement.error.empty()) Log::error("nettop failed to launch: " + measurement.error);
  const std::lock_guard guard(lock);
  if (measurement.totals) latest = std::move(*measurement.totals);
  inFlight = false;
}

}  // namespace tidewell
