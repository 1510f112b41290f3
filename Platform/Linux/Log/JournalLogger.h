#pragma once

#include <string>

#include "Tidewell/Ports/SystemLog.h"

namespace platform {

/// One destination in the journal. See `JournalLog`.
class JournalLogger : public tidewell::SystemLogger {
 public:
  JournalLogger(std::string subsystem, std::string category);

  /// Always true, because the journal keeps every message.
  bool isEnabled(tidewell::LogType type) override;
  void emit(tidewell::LogType type, const std::string& message) override;

 private:
  [[nodiscard]] bool sendToJournal(tidewell::LogType type, const std::string& message) const;
  void writeToStandardError(const std::string& message) const;

  std::string subsystem_;
  std::string category_;
};

}  // namespace platform
