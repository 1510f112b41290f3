#pragma once

#include <string>

#include "Tidewell/Ports/ProcessInfo.h"

namespace platform {

/// This process, as `NSProcessInfo` names it.
class FoundationProcessInfo final : public tidewell::ProcessInfo {
 public:
  std::string processName() override;
};

}  // namespace platform
