#include "Platform/MacOS/Loop/RunLoopTimer.h"

#include <utility>

namespace platform {
namespace {

NSTimer* makeTimer(tidewell::Seconds interval, std::function<void()> action) {
  const auto shared = std::make_shared<const std::function<void()>>(std::move(action));
  return [NSTimer timerWithTimeInterval:interval.count()
                                repeats:YES
                                  block:^(NSTimer*) {
                                    @autoreleasepool {
                                      // The action may end its own timer, and this block with it.
                                      const auto kept = shared;
                                      (*kept)();
                                    }
                                  }];
}

}  // namespace

RunLoopTimer::RunLoopTimer(tidewell::Seconds interval, std::function<void()> action)
    : timer_(makeTimer(interval, std::move(action))) {
  [NSRunLoop.mainRunLoop addTimer:timer_ forMode:NSRunLoopCommonModes];
}

RunLoopTimer::~RunLoopTimer() { [timer_ invalidate]; }

void RunLoopTimer::setTolerance(tidewell::Seconds tolerance) {
  timer_.tolerance = tolerance.count();
}

void RunLoopTimer::invalidate() { [timer_ invalidate]; }

}  // namespace platform
