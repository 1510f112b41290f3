#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/SleepNotifications.h"

namespace tidewell {

/// The system sleeps and wakes when the test says so.
class FakeSleepNotifications : public SleepNotifications {
 public:
  explicit FakeSleepNotifications(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  void observe(std::function<void()> willSleep, std::function<void()> didWake) override {
    calls_->add("observe sleep and wake");
    observers_.push_back({std::move(willSleep), std::move(didWake)});
  }

  void tellWillSleep() {
    for (const Observer& observer : observers_)
      observer.willSleep();
  }
  void tellDidWake() {
    for (const Observer& observer : observers_)
      observer.didWake();
  }

  [[nodiscard]] std::size_t observers() const { return observers_.size(); }

 private:
  struct Observer {
    std::function<void()> willSleep;
    std::function<void()> didWake;
  };

  std::shared_ptr<CallLog> calls_;
  std::vector<Observer> observers_;
};

}  // namespace tidewell
