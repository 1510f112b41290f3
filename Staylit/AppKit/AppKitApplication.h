#pragma once

#include "Staylit/Application.h"

namespace staylit {

/// The shared AppKit application, without Dock icon and with no main menu to see. `run` creates it.
/// SIGTERM, SIGINT and SIGHUP end it in the same order as its own Quit does.
class AppKitApplication final : public Application {
 public:
  /// Ends the process with status 0 once the delegate knows that it terminates.
  void run(ApplicationDelegate& delegate) override;
};

}  // namespace staylit
