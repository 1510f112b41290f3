#pragma once

#include <optional>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Application.h"
#include "Staylit/Desktop/DesktopUserInterface.h"
#include "Staylit/Desktop/Session/ApplicationService.h"
#include "Staylit/Desktop/Session/UserLock.h"
#include "Tidewell/Ports/Console.h"

namespace staylit {

/// The running program on Linux, with a desktop or without one.
///
/// There is one such program for a user: a second start passes its request to the first, says so
/// and returns at once. The program ends in order on SIGTERM, SIGINT and SIGHUP, and with the
/// user's session. It outlives a session only when the user's service manager runs it as a unit.
/// Main thread only; the arguments must outlive it.
class DesktopApplication : public Application {
 public:
  /// The first start also does what `request` asks, once it runs.
  DesktopApplication(platform::EventLoop& loop, platform::Bus& sessionBus,
                     DesktopUserInterface& userInterface, tidewell::Console& console,
                     ApplicationService::Request request);

  void run(ApplicationDelegate& delegate) override;

  /// With which to end after `run`: 0, or 1 when nothing could be done.
  [[nodiscard]] int exitStatus() const { return exitStatus_; }

 private:
  bool isTheOne(ApplicationService& service);
  void tellAsSecond(const std::string& refusal);
  bool takeLock();
  void tellThatOneRuns(std::optional<pid_t> holder);
  std::string perform(MenuItem::Action action);
  void runLoop();
  void fail(const std::string& why);

  platform::EventLoop& loop_;
  platform::Bus& sessionBus_;
  DesktopUserInterface& userInterface_;
  tidewell::Console& console_;
  ApplicationService::Request request_;
  UserLock lock_;
  int exitStatus_ = 0;
};

}  // namespace staylit
