#pragma once

#include <time.h>

#include <chrono>

#include "Tidewell/Ports/Clock.h"

namespace platform {

/// The time since the machine was started, awake or asleep. It is for waits that a long sleep also
/// ends. Safe from any thread.
///
/// The steady clock stands still while the machine sleeps. It is the right clock for waiting for a
/// process, because that process sleeps as well.
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
