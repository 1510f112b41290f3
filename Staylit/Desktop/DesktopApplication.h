#pragma once

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Application.h"
#include "Staylit/Desktop/DesktopUserInterface.h"
#include "Staylit/Desktop/Session/ApplicationService.h"

namespace staylit {

/// The running program on Linux, with a desktop or without one.
///
/// There is one such program in a session: a second start passes its request to the first and
/// returns at once. The program ends in order on SIGTERM, SIGINT and SIGHUP, and with the user's
/// session. It outlives a session only when the user's service manager runs it as a unit. Main
/// thread only; the arguments must outlive it.
class DesktopApplication : public Application {
 public:
  /// The first start also does what `request` asks, once it runs.
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
