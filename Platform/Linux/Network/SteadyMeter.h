#pragma once

#include <chrono>

#include "Tidewell/Ports/NetworkMeter.h"

namespace platform {

/// Has another meter measure a moment after it is asked.
///
/// A tick asks for a measurement and then reads the totals of the last one that is finished. A
/// measurement of the kernel's table may be finished between the two, or not, as the scheduler
/// likes. A tick would then read the bytes of two intervals, and the next tick none: a steady
/// download would seem to pause. Because of the moment, each tick reads what was measured shortly
/// after the tick before.
class SteadyMeter : public tidewell::NetworkMeter {
 public:
  /// Longer than a tick takes from its request to its reading, also where the machine is busy; and
  /// shorter than the time between two ticks of which the second still counts.
  static constexpr std::chrono::milliseconds kMoment{120};

  /// `meter` must outlive it.
  explicit SteadyMeter(tidewell::NetworkMeter& meter, std::chrono::milliseconds moment = kMoment)
      : meter_(meter), moment_(moment) {}

  /// Measures nothing, and fails without an error, when it is cancelled meanwhile.
  tidewell::NetworkMeasurement measure(tidewell::Cancellation& cancellation) override;

 private:
  tidewell::NetworkMeter& meter_;
  std::chrono::milliseconds moment_;
};

}  // namespace platform
