#pragma once

#include <functional>
#include <utility>

#include "Tidewell/Ports/NetworkMeter.h"

namespace tidewell {

/// Measures what the test sets.
class FakeNetworkMeter : public NetworkMeter {
 public:
  NetworkMeasurement measure(Cancellation& cancellation) override {
    ++measurements;
    if (whileMeasuring) whileMeasuring(cancellation);
    return next;
  }

  void setTotals(NetworkTotals totals) { next = {std::move(totals), ""}; }

  NetworkMeasurement next{NetworkTotals{}, ""};
  std::function<void(Cancellation&)> whileMeasuring;
  int measurements = 0;  ///< Counts those that failed too.
};

}  // namespace tidewell
