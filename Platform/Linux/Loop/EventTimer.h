#pragma once

#include <systemd/sd-event.h>

#include <cstdint>
#include <functional>
#include <memory>

#include "Tidewell/Ports/MainLoop.h"

namespace platform {

/// The time of the next firing of a timer that was due at `due` and fires at `now`. The result is
/// the first time after `now` that lies a multiple of `interval` after `due`. All times are in
/// microseconds; `interval` is not 0.
constexpr std::uint64_t nextFiring(std::uint64_t due, std::uint64_t interval, std::uint64_t now) {
  const std::uint64_t next = due + interval;
  return next > now ? next : next + ((now - next) / interval + 1) * interval;
}

/// A repeating timer on sd-event and the monotonic clock.
///
/// All firings lie a multiple of the interval after the first one: a late firing does not delay the
/// later ones, and firings that were missed while the thread was busy are left out. The clock
/// stands still while the machine sleeps. So the rest of an interval passes after the wake, and the
/// program hears of the wake before the next tick is due. The timer's own action may invalidate or
/// destroy the timer. The loop's thread only.
class EventTimer : public tidewell::RepeatingTimer {
 public:
  /// Ends the process with a message when the kernel gives no timer.
  EventTimer(sd_event* event, tidewell::Seconds interval, std::function<void()> action);
  ~EventTimer() override;
  EventTimer(const EventTimer&) = delete;
  EventTimer& operator=(const EventTimer&) = delete;

  void setTolerance(tidewell::Seconds tolerance) override;
  void invalidate() override;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace platform
