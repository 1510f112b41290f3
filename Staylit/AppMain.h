#pragma once

#include <string>
#include <vector>

#include "Staylit/Application.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit {

/// The process entry above the system: sets up what everything else relies on, then either prints
/// the diagnostics report or runs the application. Main thread only; both arguments must outlive
/// it.
class AppMain {
 public:
  AppMain(tidewell::Ports& ports, Application& application);

  /// `arguments` are all of the process's own. Returns the exit status, which is 0.
  int run(const std::vector<std::string>& arguments);

 private:
  tidewell::Ports& ports_;
  Application& application_;
};

}  // namespace staylit
