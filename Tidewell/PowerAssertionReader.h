#pragma once

#include <string>
#include <vector>

namespace tidewell {

/// Tells which other programs keep the machine from sleeping by themselves, through the installed
/// ports. Stateless; main thread.
class PowerAssertionReader {
 public:
  PowerAssertionReader() = delete;

  /// The names of the programs, other than this one, that hold an active assertion against system
  /// sleep: application identifiers, else names, else "pid N". Sorted, without repetition; empty
  /// when there are none or nobody can be asked. Programs that keep only the screen lit are not
  /// among them.
  static std::vector<std::string> appsPreventingSleep();
};

}  // namespace tidewell
