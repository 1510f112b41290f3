#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace platform::stub {

/// What the adapters ask through Objective-C, as the test sets it.
class Workspace {
 public:
  static Workspace& shared();

  /// As at the beginning of a test.
  void reset() { *this = Workspace(); }

  std::map<std::int32_t, std::string> applications;  ///< Each process with its identifier.
  bool isLowPowerModeEnabled = false;
};

}  // namespace platform::stub
