#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/MainLoop.h"

namespace tidewell {

/// A loop that does nothing by itself: the test fires the timers and runs what was posted.
class FakeMainLoop : public MainLoop {
 public:
  /// A timer as it was scheduled. It is kept after its end.
  struct Timer {
    Seconds interval{};
    Seconds tolerance{};
    std::function<void()> action;
    bool valid = true;
  };

  explicit FakeMainLoop(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  std::unique_ptr<RepeatingTimer> scheduleRepeating(Seconds interval,
                                                    std::function<void()> action) override {
    calls_->add("schedule timer");
    timers.push_back(std::make_shared<Timer>(Timer{interval, {}, std::move(action), true}));
    return std::make_unique<Handle>(timers.back(), calls_);
  }

  void async(std::function<void()> work) override { posted_.push_back(std::move(work)); }

  /// Fires every timer that is still valid, once.
  void fireTimers() {
    const auto now = timers;
    for (const auto& timer : now) {
      if (timer->valid) timer->action();
    }
  }

  /// Runs all posted work in order, and the work that is posted meanwhile.
  void runPosted() {
    while (!posted_.empty()) {
      const auto work = std::move(posted_.front());
      posted_.pop_front();
      work();
    }
  }

  [[nodiscard]] std::size_t posted() const { return posted_.size(); }

  std::vector<std::shared_ptr<Timer>> timers;

 private:
  class Handle : public RepeatingTimer {
   public:
    Handle(std::shared_ptr<Timer> timer, std::shared_ptr<CallLog> calls)
        : timer_(std::move(timer)), calls_(std::move(calls)) {}
    ~Handle() override { timer_->valid = false; }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void setTolerance(Seconds tolerance) override {
      calls_->add("set timer tolerance");
      timer_->tolerance = tolerance;
    }
    void invalidate() override {
      calls_->add("invalidate timer");
      timer_->valid = false;
    }

   private:
    std::shared_ptr<Timer> timer_;
    std::shared_ptr<CallLog> calls_;
  };

  std::shared_ptr<CallLog> calls_;
  std::deque<std::function<void()>> posted_;
};

}  // namespace tidewell
