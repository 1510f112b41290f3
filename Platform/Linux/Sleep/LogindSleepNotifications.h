#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/Ports/SleepNotifications.h"

namespace platform {

/// logind's announcements of sleep and wake.
///
/// Holds a lock by which logind waits with the sleep until the observers, and what they posted to
/// the main loop, are done. Without logind nobody is told anything, and without the lock (it may be
/// refused) the observers may be late.
class LogindSleepNotifications : public tidewell::SleepNotifications {
 public:
  /// Both must outlive this.
  LogindSleepNotifications(Bus& systemBus, tidewell::MainLoop& loop);
  ~LogindSleepNotifications() override;
  LogindSleepNotifications(const LogindSleepNotifications&) = delete;
  LogindSleepNotifications& operator=(const LogindSleepNotifications&) = delete;

  void observe(std::function<void()> willSleep, std::function<void()> didWake) override;

 private:
  struct Observer {
    std::function<void()> willSleep;
    std::function<void()> didWake;
  };

  struct Lock;
  [[nodiscard]] bool wantsLock() const;

  void listen();
  void prepareForSleep(bool isAboutToSleep);
  void takeLock();

  Bus& systemBus_;
  tidewell::MainLoop& loop_;
  std::vector<Observer> observers_;
  std::shared_ptr<Lock> lock_;
  BusListening announcements_;
  BusListening presence_;
  std::unique_ptr<tidewell::RepeatingTimer> retry_;
};

}  // namespace platform
