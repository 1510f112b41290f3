#include "Platform/Linux/Network/SteadyMeter.h"

#include <condition_variable>
#include <mutex>
#include <optional>

namespace platform {

tidewell::NetworkMeasurement SteadyMeter::measure(tidewell::Cancellation& cancellation) {
  std::mutex mutex;
  std::condition_variable changed;
  bool isCancelled = false;
  const bool isWatched = cancellation.onCancel([&] {
    const std::lock_guard lock(mutex);
    isCancelled = true;
    changed.notify_all();
  });
  if (isWatched) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, moment_, [&] { return isCancelled; });
  }
  // Once this has returned, nobody uses the variables above any more.
  cancellation.onCancel({});
  if (cancellation.isCancelled()) return {std::nullopt, ""};
  return meter_.measure(cancellation);
}

}  // namespace platform
