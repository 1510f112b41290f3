#pragma once

#include <string>

#include "Tidewell/Ports/PrivilegedScripts.h"

namespace platform {

/// Runs AppleScript inside this process; the system shows its own password prompt.
class AppleScriptRunner final : public tidewell::PrivilegedScripts {
 public:
  Outcome run(const std::string& source) override;
};

}  // namespace platform
