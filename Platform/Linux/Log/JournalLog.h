#pragma once

#include <memory>
#include <string>

#include "Tidewell/Ports/SystemLog.h"

namespace platform {

/// The system's journal, with the subsystem and the category as fields of their own; where no
/// journal listens, standard error. Safe from any thread. A message waits a tenth of a second at
/// most, and is then lost.
class JournalLog : public tidewell::SystemLog {
 public:
  std::shared_ptr<tidewell::SystemLogger> makeLogger(const std::string& subsystem,
                                                     const std::string& category) override;
};

}  // namespace platform
