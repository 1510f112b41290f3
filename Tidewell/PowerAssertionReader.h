#pragma once

#include <string>
#include <vector>

namespace tidewell {

/// Tells which other programs keep the machine from sleeping. It asks the installed ports and keeps
/// nothing. Main thread only.
class PowerAssertionReader {
 public:
  PowerAssertionReader() = delete;

  /// Names the programs, without this one, that hold an active assertion against system sleep: by
  /// their application identifiers, else by their names, else as "pid N". The names are sorted,
  /// each occurs once. Empty when there are none or the service cannot be asked. Programs that keep
  /// only the screen lit are left out.
  static std::vector<std::string> appsPreventingSleep();
};

}  // namespace tidewell
