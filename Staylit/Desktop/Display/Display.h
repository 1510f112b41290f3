#pragma once

#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"

namespace staylit {

/// Where windows can be shown, as some variables of the environment say.
///
/// A program that the service manager or the bus started before its user's desktop has none of
/// these variables, and learns them later. Main thread only.
class Display {
 public:
  Display() = delete;

  /// Whether a variable names a display. The display need not be there.
  static bool isKnown();

  /// The variables of this process that are about the display, as "NAME=value".
  static std::vector<std::string> variables();
  /// Takes over those of `variables` that are about the display, unless a display is known already.
  /// The variables come from others, so only a display of this machine is accepted, and only files
  /// that belong to this user or the administrator. A refusal is a line in the log.
  static void learn(const std::vector<std::string>& variables);
  /// Unsets the variables that were learnt.
  static void forget();
  /// Unsets also the variables with which this process was started, whose session may have ended.
  static void forgetAll();
  /// Learns the variables from the user's service manager, to which desktops pass them. Waits for
  /// its answer.
  static void learnFromServiceManager(platform::Bus& sessionBus);
};

}  // namespace staylit
