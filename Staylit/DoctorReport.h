#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Staylit/HoldsReport.h"

namespace staylit {

/// What was found out about this machine for `--doctor`. A value; a shell fills it.
struct DoctorFacts {
  /// A service that was asked for a hold, and whether that appeared where it should.
  struct Trial {
    enum class Listing { listed, notListed, hasNoList, refused };
    std::string service;
    std::string lister;  ///< Whose list has what the service grants; mostly the service itself.
    Listing listing = Listing::hasNoList;
  };
  enum class Tray { noDisplay, noWatcher, noPanel, ready };
  enum class Windows { absent, ofAnotherBuild, unfit, ready };
  struct SettingsProblem {
    std::size_t line = 0;
    std::string text;
    std::string file = {};  ///< Empty for the user's own.
  };

  HoldsReport sleep;  ///< Who puts the machine to sleep, and which services are there.
  std::vector<Trial> trials;
  int trialError =
      0;  ///< The negative errno for which nothing was granted; 0 for want of a service.
  bool isRoot = false;
  bool hasLogind = false;
  bool hasPolkit = false;
  Tray tray = Tray::noDisplay;
  Windows windows = Windows::absent;
  bool seesOthers = false;  ///< Whether processes of other users are to be seen.
  bool hasProcessorClocks = false;
  bool hasSettingsFile = false;
  std::string settingsError;  ///< Why the settings file cannot be read; may be empty.
  std::vector<SettingsProblem> settingsProblems;
  bool isRunning = false;
  /// Why one that runs cannot be asked, and what helps; empty when none is out of reach.
  std::string outOfReach;
  bool hasJournal = false;

  /// For a report, each "name: value", without names of the user's files or programs.
  std::vector<std::string> particulars;
};

/// One page that says what is wrong with this machine as far as Staylit is concerned, and what to
/// do. A value.
struct DoctorReport {
  /// With which the program ends.
  enum Exit : int { fine = 0, somethingToDo = 1, trouble = 2 };
  /// What marks a line: drawn signs, or plain letters for a terminal that cannot show them.
  enum class Signs { drawn, plain };

  struct Check {
    std::string subject;  ///< In a word, for the report.
    std::string finding;
    std::string remedy;  ///< Empty where there is nothing to do.
  };

  std::string nothingCanBeHeld;  ///< Why; empty when something can.
  std::vector<Check> checks;
  std::vector<std::string> particulars;

  /// Whether this start asks only for that; `arguments` are all of the process.
  static bool isAskedFor(const std::vector<std::string>& arguments);

  static DoctorReport of(const DoctorFacts& facts);

  [[nodiscard]] std::vector<std::string> lines(Signs signs) const;
  /// Trouble where nothing can be held.
  [[nodiscard]] Exit exitStatus() const;
};

}  // namespace staylit
