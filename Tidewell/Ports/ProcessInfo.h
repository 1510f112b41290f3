#pragma once

#include <string>

namespace tidewell {

/// What the system knows about this very process. Main thread only.
class ProcessInfo {
 public:
  virtual ~ProcessInfo() = default;
  /// The name that the system's own tools list this process under; valid UTF-8.
  virtual std::string processName() = 0;
};

}  // namespace tidewell
