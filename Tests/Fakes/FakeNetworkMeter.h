#pragma once

#include <functional>
#include <utility>

#include "Tidewell/Ports/NetworkMeter.h"

namespace tidewell {

/// Finds what the test says.
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
  int measurements = 0;  ///< Also those that failed.
};

}  // namespace tidewell
