#pragma once

#include <string>
#include <vector>

#include "Tidewell/BusyApp.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit {

/// Watches the machine for a short while. Then it prints to standard output what it saw, and
/// whether Staylit would hold the machine awake. Main thread only, before any loop runs.
class Diagnostics {
 public:
  Diagnostics() = delete;

  /// Makes the whole report, and takes as long as its first line says. While it samples, a progress
  /// line is shown on standard error if that is a terminal. Takes no assertion and writes no
  /// setting. `ports` are the installed ones.
  static void run(tidewell::Ports& ports);

 private:
  static void report(tidewell::Ports& ports, const std::string& title,
                     const std::vector<tidewell::BusyApp>& apps, const std::string& empty);
};

}  // namespace staylit
