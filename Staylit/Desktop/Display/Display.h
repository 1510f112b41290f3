#pragma once

#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"

namespace staylit {

/// Where windows can be shown. Variables of the environment say so.
///
/// A program that the service manager or the bus started before its user's desktop has none of
/// these variables, and learns them later. Main thread only.
class Display {
 public:
  Display() = delete;

  static bool isKnown();

  /// The variables of this process that are about the display, as "NAME=value".
  static std::vector<std::string> variables();
  /// Takes over those of `variables` that are about the display, unless a display is known already.
  /// The variables come from others, so only a display of this machine is accepted, and only files
  /// that belong to this user or the administrator. A refusal is a line in the log.
  static void learn(const std::vector<std::string>& variables);
  /// Forgets what was learnt, once it is of no use any more.
  static void forget();
  /// Also forgets the display that this process was started with, since its session may have ended.
  static void forgetAll();
  /// Asks the user's service manager, to which desktops pass the variables. Waits for the answer.
  static void learnFromServiceManager(platform::Bus& sessionBus);
};

}  // namespace staylit
