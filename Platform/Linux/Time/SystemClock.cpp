#include "Platform/Linux/Time/SystemClock.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "Platform/Linux/Time/BootTime.h"

namespace platform {

tidewell::Moment SystemClock::now() {
  return BootTime::now();
}

tidewell::WallTime SystemClock::wallTime() {
  return std::chrono::time_point_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now());
}

std::chrono::nanoseconds SystemClock::timeAsleep() {
  // The steady clock stands still while the machine sleeps.
  const auto all = BootTime::now().time_since_epoch();
  return all - std::chrono::steady_clock::now().time_since_epoch();
}

void SystemClock::sleepFor(tidewell::Seconds duration) {
  constexpr tidewell::Seconds longest(1e9);
  // A duration that is not a number means no sleep either.
  if (!(duration > tidewell::Seconds::zero())) return;
  std::this_thread::sleep_for(
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::min(duration, longest)));
}

}  // namespace platform
