#pragma once

#include <string>
#include <vector>

#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// Runs command-line tools as child processes, on both systems.
///
/// A tool gets the program's environment, the null device as standard input and standard error, no
/// other open descriptor, and every signal unblocked and at its default. `executable` is a path;
/// nothing is searched for. A launch that fails tells the system's own message.
class SpawnedTaskLauncher : public tidewell::TaskLauncher {
 public:
  Launch launch(const std::string& executable, const std::vector<std::string>& arguments) override;
};

}  // namespace platform
