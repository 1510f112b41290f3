#pragma once

#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"

namespace staylit {

/// Where windows can be shown, which is said by variables of the environment.
///
/// A program that was started before its user's desktop, by the service manager or the bus, has
/// none of them and learns them later. Main thread only.
class Display {
 public:
  Display() = delete;

  static bool isKnown();

  /// The variables of this process that are about it, as "NAME=value".
  static std::vector<std::string> variables();
  /// Takes those over that are about it, unless a display is known already. They come from others:
  /// only a display of this machine is taken, and only files that are this user's or the
  /// administrator's. What is refused is a line in the log.
  static void learn(const std::vector<std::string>& variables);
  /// Forgets what was learnt, which is no use any more.
  static void forget();
  /// Forgets also what this process was started with, which is of a session that may have ended.
  static void forgetAll();
  /// Learns it from the user's service manager, where desktops leave it. Waits for the answer.
  static void learnFromServiceManager(platform::Bus& sessionBus);
};

}  // namespace staylit
