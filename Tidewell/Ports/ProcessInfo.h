#pragma once

#include <string>

namespace tidewell {

/// What the system knows about this process. Main thread only.
class ProcessInfo {
 public:
  virtual ~ProcessInfo() = default;
  /// The name under which the system's own tools list this process; valid UTF-8.
  virtual std::string processName() = 0;
};

}  // namespace tidewell
