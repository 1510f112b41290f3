#pragma once

#include <optional>
#include <string>

#include "Tidewell/Ports/PrivilegedScripts.h"

namespace platform {

/// For a system that has no such scripts: every run fails and says so.
class NoPrivilegedScripts : public tidewell::PrivilegedScripts {
 public:
  Outcome run(const std::string& /*source*/) override {
    return {true, Error{std::nullopt, "this system has no privileged scripts"}};
  }
};

}  // namespace platform
