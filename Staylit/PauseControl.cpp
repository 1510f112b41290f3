#include "Staylit/PauseControl.h"

#include <chrono>
#include <variant>

namespace staylit {

PauseControl::PauseControl(StaylitEngine& engine, tidewell::Ports& ports)
    : engine_(engine), ports_(ports) {
  statusSubscription_ = engine_.status().observe([this](const EngineStatus& next) {
    if (std::holds_alternative<EngineStatus::Paused>(next.value)) return;
    end_.reset();
    timer_.reset();
  });
}

void PauseControl::pause(std::optional<tidewell::Seconds> length) {
  engine_.setPaused(true);
  end_.reset();
  timer_.reset();
  if (!length) return;
  const auto inTicks = std::chrono::duration_cast<tidewell::Moment::duration>(*length);
  const auto inWallTime = std::chrono::duration_cast<tidewell::WallTime::duration>(*length);
  end_ = {ports_.clock->now() + inTicks, ports_.clock->wallTime() + inWallTime};
  // Timers stand still while the computer sleeps, so the clock is asked now and then.
  timer_ = ports_.mainLoop->scheduleRepeating(StaylitEngine::kInterval, [this] {
    // Resuming drops the timer, which must not happen while the timer fires.
    ports_.mainLoop->async([control = self_.make()] {
      if (control) control->resumeWhenItIsTime();
    });
  });
  timer_->setTolerance(StaylitEngine::kTolerance);
}

bool PauseControl::resume() {
  if (!engine_.isPaused()) return false;
  engine_.setPaused(false);
  return true;
}

std::optional<tidewell::WallTime> PauseControl::until() const {
  if (!end_) return std::nullopt;
  return end_->wallTime;
}

void PauseControl::resumeWhenItIsTime() {
  if (end_ && ports_.clock->now() >= end_->moment) engine_.setPaused(false);
}

}  // namespace staylit
