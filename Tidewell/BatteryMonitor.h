#pragma once

#include "Tidewell/PowerState.h"

namespace tidewell {

/// Reads the machine's power situation through the installed ports.
class BatteryMonitor {
 public:
  BatteryMonitor() = delete;

  /// The situation now. Main thread; a few quick queries, nothing kept, nothing logged. What the
  /// platform leaves out reads as the harmless value: on AC, 100 %, no battery.
  static PowerState current();
};

}  // namespace tidewell
