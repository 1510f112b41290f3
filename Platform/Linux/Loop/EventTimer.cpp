#include "Platform/Linux/Loop/EventTimer.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <utility>

#include "Platform/Linux/Loop/EventSource.h"
#include "Tidewell/FatalError.h"

namespace platform {
namespace {

constexpr std::uint64_t kShortestInterval = 100;
/// With 0, sd-event would take an accuracy of a quarter of a second.
constexpr std::uint64_t kSharpest = 1;
constexpr double kLongestSeconds = 1e9;

std::uint64_t monotonicMicroseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

std::uint64_t microseconds(tidewell::Seconds duration, std::uint64_t least) {
  if (!(duration.count() > 0)) return least;
  const double value = std::min(duration.count(), kLongestSeconds) * 1e6;
  return std::max(least, static_cast<std::uint64_t>(value));
}

}  // namespace

/// The handler shares the state while it runs, so that the action may destroy the timer.
struct EventTimer::State : std::enable_shared_from_this<State> {
  EventSource source;
  std::function<void()> action;
  std::uint64_t interval = 0;
  std::uint64_t next = 0;

  static int fire(sd_event_source* source, std::uint64_t /*due*/, void* data) {
    const std::shared_ptr<State> self = static_cast<State*>(data)->shared_from_this();
    self->next = nextFiring(self->next, self->interval, monotonicMicroseconds());
    sd_event_source_set_time(source, self->next);
    sd_event_source_set_enabled(source, SD_EVENT_ONESHOT);
    self->action();
    return 0;
  }
};

EventTimer::EventTimer(sd_event* event, tidewell::Seconds interval, std::function<void()> action)
    : state_(std::make_shared<State>()) {
  state_->action = std::move(action);
  state_->interval = microseconds(interval, kShortestInterval);
  state_->next = monotonicMicroseconds() + state_->interval;
  sd_event_source* source = nullptr;
  if (sd_event_add_time(event, &source, CLOCK_MONOTONIC, state_->next, kSharpest, State::fire,
                        state_.get()) < 0) {
    tidewell::fatalError("no timer to be had");
  }
  state_->source = EventSource(source);
}

EventTimer::~EventTimer() {
  invalidate();
}

void EventTimer::setTolerance(tidewell::Seconds tolerance) {
  if (!state_->source) return;
  sd_event_source_set_time_accuracy(state_->source.get(), microseconds(tolerance, kSharpest));
}

void EventTimer::invalidate() {
  state_->source.reset();
}

}  // namespace platform
