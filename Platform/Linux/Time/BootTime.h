#pragma once

#include <time.h>

#include <chrono>

#include "Tidewell/Ports/Clock.h"

namespace platform {

/// The time since the machine was started, including the time in which it slept. It is for waits
/// that may end during a sleep. Safe from any thread.
///
/// The steady clock stands still while the machine sleeps. It is right for waiting for another
/// process, because that process sleeps as well.
struct BootTime {
  static tidewell::Moment now() {
    timespec time{};
    // Every kernel that this program runs on has this clock.
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return tidewell::Moment(std::chrono::seconds(time.tv_sec) +
                            std::chrono::nanoseconds(time.tv_nsec));
  }
};

}  // namespace platform
