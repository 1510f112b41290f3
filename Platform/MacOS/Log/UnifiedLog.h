#pragma once

#include "Tidewell/Ports/SystemLog.h"

namespace platform {

/// The unified log of the system.
class UnifiedLog final : public tidewell::SystemLog {
 public:
  std::shared_ptr<tidewell::SystemLogger> makeLogger(const std::string& subsystem,
                                                     const std::string& category) override;
};

}  // namespace platform
