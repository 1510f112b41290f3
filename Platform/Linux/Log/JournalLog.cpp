#include "Platform/Linux/Log/JournalLog.h"

#include "Platform/Linux/Log/JournalLogger.h"

namespace platform {

std::shared_ptr<tidewell::SystemLogger> JournalLog::makeLogger(const std::string& subsystem,
                                                               const std::string& category) {
  return std::make_shared<JournalLogger>(subsystem, category);
}

}  // namespace platform
