#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Staylit/StatusReport.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/Console.h"

namespace staylit {

/// What a program that asks for the status was asked for itself.
struct StatusRequest {
  enum class Form { text, json };
  Form form = Form::text;
  bool follows = false;    ///< Tells each change, until it is interrupted.
  bool ofMachine = false;  ///< Asks only the one that serves the whole machine.

  /// What `arguments`, which are all of the process, ask for with "--status"; absent where they do
  /// not, or where "--diagnose" goes before it.
  static std::optional<StatusRequest> in(const std::vector<std::string>& arguments);

  friend bool operator==(const StatusRequest&, const StatusRequest&) = default;
};

/// Prints what was found out about the Staylit that runs, in the form and as often as was asked
/// for, and says with which status to end.
///
/// Main thread only; the console and the clock must outlive it.
class StatusPrinter {
 public:
  /// With which the program ends.
  enum Exit : int { held = 0, notHeld = 1, trouble = 2, noneRuns = 3 };

  StatusPrinter(StatusRequest request, tidewell::Console& console, tidewell::Clock& clock);

  /// One that runs has answered.
  void answered(const StatusReport& report);
  /// None runs.
  void foundNone();
  /// It could not be found out. `why` is for people, and goes to standard error.
  void failed(const std::string& why);

  /// Whether something could not be printed, so that to go on is of no use.
  [[nodiscard]] bool isLost() const { return console_.hasLostOutput(); }

  /// After what was printed last.
  [[nodiscard]] int exitStatus() const { return exit_; }

 private:
  void printChange(const std::string& text);

  StatusRequest request_;
  tidewell::Console& console_;
  tidewell::Clock& clock_;
  Exit exit_ = trouble;
  std::optional<StatusReport> told_;  ///< The report that was printed last.
  bool isToldThatNoneRuns_ = false;
};

}  // namespace staylit
