#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tidewell {

/// Lets a laptop work on with its lid closed.
///
/// Where the system has a lid switch (`Ports::lidSwitch` is set), this class holds the switch, and
/// the hold ends with the process. Elsewhere an administrator's command switches the machine-wide
/// sleep setting off. That setting outlives the program, so a launch agent (the watchdog) is
/// installed that switches sleep on again once the program no longer runs.
///
/// Main thread only. Without a lid switch, all operations block until the tools and the user are
/// done. With a lid switch, no operation waits for the user. Failures are returned, and logged
/// unless the user declined.
class ClamshellController {
 public:
  ClamshellController() = delete;

  /// The name of the process whose end the watchdog looks for; this process's own by default. With
  /// a lid switch (Linux) there is no default, so do not ask for it there. Set the name and the
  /// label once at launch, after the ports are installed and before any other use: whenever other
  /// ports are installed, both begin with their defaults again.
  static std::string ownerProcessName();
  static void setOwnerProcessName(std::string name);
  static std::string watchdogLabel();
  static void setWatchdogLabel(std::string label);

  /// The path of the watchdog's file. Do not ask for it where there is a lid switch (Linux).
  static std::string watchdogURL();

  /// Switches sleep off. False when that failed or was declined. Fails where a lid switch would
  /// have to ask the user.
  static bool enable();
  /// As `enable`, but tells `done` the outcome: before this function returns, or later from the
  /// main loop when a lid switch asks the user. `done` is never called when `disable` or `enable`
  /// is called before the user has answered.
  static void enable(std::function<void(bool)> done);
  /// Switches sleep off again for an earlier process that had done so and has ended. Without a lid
  /// switch the setting has outlived that process, and there is nothing to do. Asks the user
  /// nothing. False when sleep is not switched off and nothing goes on trying.
  static bool resume();
  /// Removes the watchdog and switches sleep on again. False when the latter failed.
  static bool disable();
  /// Whether sleep is switched off, whoever did it.
  static bool isDisabled();

 private:
  static void installWatchdog();
  static void removeWatchdog();
  static std::optional<std::string> run(const std::string& path,
                                        const std::vector<std::string>& arguments);
  static bool runPrivileged(const std::string& command);
};

}  // namespace tidewell
