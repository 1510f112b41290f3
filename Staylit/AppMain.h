#pragma once

#include <string>
#include <vector>

#include "Staylit/Application.h"
#include "Staylit/UserInterface.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit {

/// The entry of the process, above the system: sets up what everything else relies on, then either
/// prints the diagnostics report or runs the application. Main thread only; all arguments must
/// outlive it. The report uses neither the application nor the user interface.
class AppMain {
 public:
  AppMain(tidewell::Ports& ports, Application& application, UserInterface& userInterface);

  /// `arguments` are all arguments of the process. Returns the exit status, which is 0.
  int run(const std::vector<std::string>& arguments);

 private:
  tidewell::Ports& ports_;
  Application& application_;
  UserInterface& userInterface_;
};

}  // namespace staylit
