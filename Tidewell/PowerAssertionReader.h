#pragma once

#include <string>
#include <vector>

namespace tidewell {

/// A program that keeps the machine from sleeping, and its own words about that.
struct AskingProgram {
  std::string name;  ///< As the menu and the list of ignored applications have it.
  std::string
      words;  ///< "Backup tool: Nightly backup"; clean, empty where the program says nothing.

  friend bool operator==(const AskingProgram&, const AskingProgram&) = default;
};

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

  /// The same programs in the same order, with their own words. Of a program that holds many
  /// assertions, the words of the first few that differ.
  static std::vector<AskingProgram> programsPreventingSleep();
};

}  // namespace tidewell
