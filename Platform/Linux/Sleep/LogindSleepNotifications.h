#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Tidewell/Ports/MainLoop.h"
#include "Tidewell/Ports/SleepNotifications.h"

namespace platform {

/// Tells observers of sleep and wake, as logind announces them.
///
/// Holds a lock that makes logind delay the sleep until the observers, and the work that they
/// posted to the main loop, are done. Without logind, observers are told nothing. When logind
/// refuses the lock, the observers may be told too late.
class LogindSleepNotifications : public tidewell::SleepNotifications {
 public:
  /// `systemBus` and `loop` must outlive this object.
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
