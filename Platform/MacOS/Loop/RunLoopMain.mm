#include "Platform/MacOS/Loop/RunLoopMain.h"

#include <dispatch/dispatch.h>

#include <utility>

#include "Platform/MacOS/Loop/DispatchWork.h"
#include "Platform/MacOS/Loop/RunLoopTimer.h"

namespace platform {

void RunLoopMain::Pending::add(std::function<void()> work) {
  const std::lock_guard guard(lock_);
  work_.push_back(std::move(work));
}

std::size_t RunLoopMain::Pending::count() {
  const std::lock_guard guard(lock_);
  return work_.size();
}

void RunLoopMain::Pending::runNext() {
  std::function<void()> next;
  {
    const std::lock_guard guard(lock_);
    if (work_.empty()) return;
    next = std::move(work_.front());
    work_.pop_front();
  }
  next();
}

std::unique_ptr<tidewell::RepeatingTimer> RunLoopMain::scheduleRepeating(
    tidewell::Seconds interval, std::function<void()> action) {
  return std::make_unique<RunLoopTimer>(interval, std::move(action));
}

void RunLoopMain::async(std::function<void()> work) {
  pending_->add(std::move(work));
  // The main queue gets one turn for each piece of work. A turn finds nothing when `runPending`
  // came first.
  dispatchAsync(dispatch_get_main_queue(), [pending = std::weak_ptr(pending_)] {
    if (const auto kept = pending.lock()) kept->runNext();
  });
}

void RunLoopMain::runPending() {
  const std::shared_ptr<Pending> kept = pending_;
  for (std::size_t left = kept->count(); left > 0; --left) {
    @autoreleasepool {
      kept->runNext();
    }
  }
}

}  // namespace platform
