#pragma once

#include <IOKit/pwr_mgt/IOPMLib.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Platform/MacOS/Stubs/Value.h"

namespace platform::stub {

/// The machine's power management, as the test sets it: what IOKit's stubs answer from.
class PowerService {
 public:
  struct Assertion {
    std::u16string type;
    std::uint32_t level = 0;
    std::u16string name;

    friend bool operator==(const Assertion&, const Assertion&) = default;
  };

  static PowerService& shared();

  /// As at the beginning of a test: nothing is held, and no source feeds the machine.
  void reset() { *this = PowerService(); }

  /// How the service lists an assertion, besides with other things that nobody here reads.
  static Value listed(const Assertion& assertion);

  std::map<IOPMAssertionID, Assertion> held;           ///< By this process.
  std::vector<std::pair<std::int64_t, Value>> others;  ///< What other processes hold, as listed.
  std::optional<Value> answer;                         ///< In place of the list of all processes.
  IOReturn creating = kIOReturnSuccess;                ///< What a request for an assertion answers.
  IOReturn renaming = kIOReturnSuccess;
  IOReturn listing = kIOReturnSuccess;  ///< The list comes along even with a failure.
  bool givesNoList = false;

  /// What each power source says of itself; absent for one that cannot be described.
  std::vector<std::optional<Value>> sources;
  bool knowsOfSources = true;
  bool listsSources = true;
  int descriptions = 0;  ///< How often one was asked for.
};

}  // namespace platform::stub
