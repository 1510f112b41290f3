#pragma once

#include <time.h>

#include <chrono>

#include "Tidewell/Ports/Clock.h"

namespace platform {

/// The time since the machine was started, asleep or awake. For what must be over after a sleep
/// that was long enough. Safe from any thread.
///
/// The steady clock stands still while the machine sleeps. It is the right one for waiting: whoever
/// is waited for sleeps as well.
struct BootTime {
  static tidewell::Moment now() {
    timespec time{};
    // Every kernel that has a /proc to read has this clock.
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return tidewell::Moment(std::chrono::seconds(time.tv_sec) +
                            std::chrono::nanoseconds(time.tv_nsec));
  }
};

}  // namespace platform
