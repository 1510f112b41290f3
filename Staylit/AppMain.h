#pragma once

#include <string>
#include <vector>

#include "Staylit/Application.h"
#include "Staylit/UserInterface.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit {

/// The portable entry of the process. Installs the ports and sets the names that everything else
/// relies on, then either prints the diagnostics report or runs the application. The report uses
/// neither the application nor the user interface. Main thread only; all arguments must outlive it.
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
