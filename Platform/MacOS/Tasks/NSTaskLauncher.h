#pragma once

#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// Starts tools as tasks of Foundation.
class NSTaskLauncher final : public tidewell::TaskLauncher {
 public:
  Launch launch(const std::string& executable, const std::vector<std::string>& arguments) override;
};

}  // namespace platform
