#include "Platform/MacOS/Log/UnifiedLog.h"

#include <os/log.h>

#include "Platform/MacOS/Text/Unicode.h"

namespace platform {
namespace {

os_log_type_t osLogType(tidewell::LogType type) {
  switch (type) {
    case tidewell::LogType::info:
      return OS_LOG_TYPE_INFO;
    case tidewell::LogType::error:
      return OS_LOG_TYPE_ERROR;
  }
  return OS_LOG_TYPE_DEFAULT;
}

class UnifiedLogger final : public tidewell::SystemLogger {
 public:
  UnifiedLogger(const std::string& subsystem, const std::string& category)
      : log_(os_log_create(subsystem.c_str(), category.c_str())) {}

  bool isEnabled(tidewell::LogType type) override {
    return os_log_type_enabled(log_, osLogType(type));
  }

  void emit(tidewell::LogType type, const std::string& message) override {
    if (!isEnabled(type)) return;
    const std::string text = repairedUtf8(message);
    // Messages contain names of applications, which the log would otherwise hide as private.
    os_log_with_type(log_, osLogType(type), "%{public}s", text.c_str());
  }

 private:
  const os_log_t log_;
};

}  // namespace

std::shared_ptr<tidewell::SystemLogger> UnifiedLog::makeLogger(const std::string& subsystem,
                                                               const std::string& category) {
  return std::make_shared<UnifiedLogger>(subsystem, category);
}

}  // namespace platform
