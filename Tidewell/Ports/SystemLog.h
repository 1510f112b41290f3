#pragma once

#include <memory>
#include <string>

namespace tidewell {

enum class LogType { info, error };

/// One destination in the system's log: a subsystem and a category. Safe from any thread.
class SystemLogger {
 public:
  virtual ~SystemLogger() = default;
  virtual bool isEnabled(LogType type) = 0;

  /// Writes `message` literally, readable by everyone who may read the log.
  virtual void emit(LogType type, const std::string& message) = 0;
};

class SystemLog {
 public:
  virtual ~SystemLog() = default;
  virtual std::shared_ptr<SystemLogger> makeLogger(const std::string& subsystem,
                                                   const std::string& category) = 0;
};

}  // namespace tidewell
