#pragma once

#include <optional>
#include <string>

#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/Console.h"

namespace staylit {

/// Tells a person who started Staylit in a terminal what it does: one line for each change of
/// state, with the time, the status, and the reasons of the applications that work. A countdown, or
/// a new order of the same applications, is no change.
///
/// Main thread only; the engine, the console and the clock must outlive it.
class TerminalReporter {
 public:
  TerminalReporter(StaylitEngine& engine, tidewell::Console& console, tidewell::Clock& clock);

  /// Prints another text, in a line with the time.
  void tell(const std::string& text);

 private:
  void statusWillChange(const EngineStatus& next);

  StaylitEngine& engine_;
  tidewell::Console& console_;
  tidewell::Clock& clock_;
  std::optional<EngineStatus> told_;  ///< That the last line told of.
  Subscription subscription_;
};

}  // namespace staylit
