#include "Platform/MacOS/FoundationClock.h"

#import <Foundation/Foundation.h>

namespace platform {

tidewell::Date FoundationClock::now() {
  @autoreleasepool {
    const tidewell::Seconds sinceEpoch(NSDate.date.timeIntervalSince1970);
    return tidewell::Date(std::chrono::duration_cast<tidewell::Date::duration>(sinceEpoch));
  }
}

void FoundationClock::sleepFor(tidewell::Seconds duration) {
  [NSThread sleepForTimeInterval:duration.count()];
}

}  // namespace platform
