#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tidewell {

/// Lets a laptop work on with its lid closed.
///
/// Where the system has a lid switch (`Ports::lidSwitch` is set), it is held and ends with the
/// process. Elsewhere the machine-wide sleep setting is switched off by an administrator's command,
/// and because that outlives the program, a launch agent (the watchdog) is installed that switches
/// it on again once the program no longer runs.
///
/// Main thread only. All operations block until the tools, and the user, are done, but for a lid
/// switch, for whose user nothing waits. Failures are returned, and logged unless the user
/// declined.
class ClamshellController {
 public:
  ClamshellController() = delete;

  /// The name of the process whose end the watchdog looks for; this process's own by default. Set
  /// once at launch, before any other use but after the ports are installed, like the label: other
  /// ports start with the defaults again. With a lid switch (Linux) there is no default to ask for.
  static std::string ownerProcessName();
  static void setOwnerProcessName(std::string name);
  static std::string watchdogLabel();
  static void setWatchdogLabel(std::string label);

  /// The path of the watchdog's file. Not to be asked for where there is a lid switch (Linux).
  static std::string watchdogURL();

  /// Switches sleep off. False when that failed or was declined. A lid switch that must ask the
  /// user fails.
  static bool enable();
  /// As `enable`, whose outcome goes to `done`: before this returns, or later from the main loop
  /// when a lid switch asks the user. Not at all when `disable` or `enable` comes before that.
  static void enable(std::function<void(bool)> done);
  /// Takes up what an earlier process had enabled, where its end has ended that; elsewhere there is
  /// nothing to do. Asks the user nothing. False when sleep is not switched off for it, and nothing
  /// goes on trying.
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
