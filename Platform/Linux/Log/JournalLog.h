#pragma once

#include <memory>
#include <string>

#include "Tidewell/Ports/SystemLog.h"

namespace platform {

/// Writes to the system's journal, with fields for the subsystem and the category, or to standard
/// error when no journal listens. Safe from any thread. Writing a message waits for a tenth of a
/// second at most; after that the message is lost.
class JournalLog : public tidewell::SystemLog {
 public:
  /// Whether a journal listens and has room now.
  static bool isListening();

  std::shared_ptr<tidewell::SystemLogger> makeLogger(const std::string& subsystem,
                                                     const std::string& category) override;
};

}  // namespace platform
