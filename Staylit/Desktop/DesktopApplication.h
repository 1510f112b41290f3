#pragma once

#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Application.h"
#include "Staylit/Desktop/DesktopUserInterface.h"

namespace staylit {

/// The running program on Linux, with a desktop or without one.
///
/// It is one of its kind in its session: a second start makes the first show Choose Apps, or do
/// what the options "--pause", "--choose-apps" or "--settings" say, and returns at once. It ends in
/// order on SIGTERM, SIGINT, SIGHUP and with the user's session. Main thread only; all arguments
/// must outlive it.
class DesktopApplication : public Application {
 public:
  /// `arguments` are all of the process's own.
  DesktopApplication(platform::EventLoop& loop, platform::Bus& sessionBus,
                     DesktopUserInterface& userInterface, std::vector<std::string> arguments);

  void run(ApplicationDelegate& delegate) override;

 private:
  [[nodiscard]] std::string wantedAction() const;
  void runLoop();

  platform::EventLoop& loop_;
  platform::Bus& sessionBus_;
  DesktopUserInterface& userInterface_;
  std::vector<std::string> arguments_;
};

}  // namespace staylit
