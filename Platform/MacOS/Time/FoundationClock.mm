#include "Platform/MacOS/Time/FoundationClock.h"

#import <Foundation/Foundation.h>
#include <mach/mach_time.h>

namespace platform {
namespace {

/// The number of nanoseconds in a unit of Mach's clocks.
double nanosecondsPerUnit() {
  static const double ratio = [] {
    mach_timebase_info_data_t info{};
    mach_timebase_info(&info);
    return static_cast<double>(info.numer) / info.denom;
  }();
  return ratio;
}

}  // namespace

tidewell::Moment FoundationClock::now() {
  // Absolute time stands still while the Mac sleeps, and what the library's steady clock is made of
  // differs with its version.
  const double nanoseconds = static_cast<double>(mach_continuous_time()) * nanosecondsPerUnit();
  return tidewell::Moment(std::chrono::nanoseconds(static_cast<std::int64_t>(nanoseconds)));
}

tidewell::WallTime FoundationClock::wallTime() {
  @autoreleasepool {
    const tidewell::Seconds sinceEpoch(NSDate.date.timeIntervalSince1970);
    return tidewell::WallTime(std::chrono::duration_cast<tidewell::WallTime::duration>(sinceEpoch));
  }
}

std::chrono::nanoseconds FoundationClock::timeAsleep() {
  const std::uint64_t all = mach_continuous_time();
  const std::uint64_t awake = mach_absolute_time();
  const double asleep = static_cast<double>(all) - static_cast<double>(awake);
  return std::chrono::nanoseconds(static_cast<std::int64_t>(asleep * nanosecondsPerUnit()));
}

void FoundationClock::sleepFor(tidewell::Seconds duration) {
  [NSThread sleepForTimeInterval:duration.count()];
}

}  // namespace platform
