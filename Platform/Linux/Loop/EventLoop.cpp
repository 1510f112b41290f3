#include "Platform/Linux/Loop/EventLoop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <utility>

#include "Platform/Linux/Loop/EventTimer.h"
#include "Tidewell/FatalError.h"

namespace platform {

EventLoop::EventLoop() : wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  sd_event_source* source = nullptr;
  if (!wakeUp_ || sd_event_new(&event_) < 0 ||
      sd_event_add_io(event_, &source, wakeUp_.get(), EPOLLIN, runPosted, this) < 0) {
    tidewell::fatalError("no event loop to be had");
  }
  wakeUpSource_ = EventSource(source);
}

EventLoop::~EventLoop() {
  if (!signals_.empty()) {
    signals_.clear();
    pthread_sigmask(SIG_SETMASK, &formerMask_, nullptr);
  }
  wakeUpSource_.reset();
  sd_event_unref(event_);
}

std::unique_ptr<tidewell::RepeatingTimer> EventLoop::scheduleRepeating(
    tidewell::Seconds interval, std::function<void()> action) {
  auto timer = std::make_unique<EventTimer>(event_, interval, std::move(action));
  wake();
  return timer;
}

void EventLoop::async(std::function<void()> work) {
  posted_.push_back(std::move(work));
  // A foreign loop sees only descriptors, so a deferred source would not wake it.
  if (posted_.size() == 1) ::eventfd_write(wakeUp_.get(), 1);
}

int EventLoop::runPosted(sd_event_source* /*source*/, int descriptor, unsigned /*events*/,
                         void* data) {
  auto& loop = *static_cast<EventLoop*>(data);
  eventfd_t count = 0;
  ::eventfd_read(descriptor, &count);
  const std::vector<std::function<void()>> batch = std::exchange(loop.posted_, {});
  for (const std::function<void()>& work : batch)
    work();
  return 0;
}

int EventLoop::run() {
  while (!stopping_ && !handingOver_) {
    if (sd_event_get_state(event_) == SD_EVENT_ARMED) {
      pumpOnce();
    } else if (sd_event_run(event_, UINT64_MAX) < 0) {
      return 1;
    }
  }
  if (!std::exchange(handingOver_, false)) stopping_ = false;
  return status_;
}

void EventLoop::handOver() {
  handingOver_ = true;
}

void EventLoop::stop(int status) {
  stopping_ = true;
  status_ = status;
  wake();
}

void EventLoop::watchTerminationSignals(std::function<void()> action) {
  const bool first = !onTermination_;
  onTermination_ = std::move(action);
  if (!first) return;
  pthread_sigmask(SIG_SETMASK, nullptr, &formerMask_);
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    // A signal that was ignored from the start stays ignored, as nohup and shells expect.
    struct sigaction current {};
    if (sigaction(number, nullptr, &current) == 0 && current.sa_handler == SIG_IGN) continue;
    sd_event_source* source = nullptr;
    if (sd_event_add_signal(event_, &source, number | SD_EVENT_SIGNAL_PROCMASK, terminate, this) <
        0) {
      tidewell::fatalError("termination signals cannot be watched");
    }
    signals_.emplace_back(source);
  }
}

int EventLoop::terminate(sd_event_source* /*source*/, const struct signalfd_siginfo* /*info*/,
                         void* data) {
  const std::function<void()> action = static_cast<EventLoop*>(data)->onTermination_;
  action();
  return 0;
}

int EventLoop::descriptor() const {
  return sd_event_get_fd(event_);
}

void EventLoop::pumpOnce() {
  if (sd_event_get_state(event_) == SD_EVENT_ARMED) sd_event_wait(event_, 0);
  if (sd_event_get_state(event_) == SD_EVENT_PENDING) sd_event_dispatch(event_);
}

bool EventLoop::isDispatching() const {
  return sd_event_get_state(event_) == SD_EVENT_RUNNING;
}

void EventLoop::pump() {
  if (isDispatching()) return;
  pumpOnce();
  while (sd_event_prepare(event_) > 0)
    sd_event_dispatch(event_);
}

void EventLoop::wake() {
  // An armed loop sleeps and does not see the change. In any other state the loop looks by itself.
  if (sd_event_get_state(event_) == SD_EVENT_ARMED) ::eventfd_write(wakeUp_.get(), 1);
}

}  // namespace platform
