#pragma once

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Application.h"
#include "Staylit/Desktop/DesktopUserInterface.h"
#include "Staylit/Desktop/Session/ApplicationService.h"

namespace staylit {

/// The running program on Linux, with a desktop or without one.
///
/// It is one of its kind in its session: a second start makes its request of the first and returns
/// at once. It ends in order on SIGTERM, SIGINT, SIGHUP and with the user's session, which it
/// outlives only as the unit of the user's service manager. Main thread only; what it refers to
/// must outlive it.
class DesktopApplication : public Application {
 public:
  /// `request` is also what the first start does, once it runs.
  DesktopApplication(platform::EventLoop& loop, platform::Bus& sessionBus,
                     DesktopUserInterface& userInterface, ApplicationService::Request request);

  void run(ApplicationDelegate& delegate) override;

 private:
  void runLoop();

  platform::EventLoop& loop_;
  platform::Bus& sessionBus_;
  DesktopUserInterface& userInterface_;
  ApplicationService::Request request_;
};

}  // namespace staylit
