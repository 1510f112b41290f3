#pragma once

#include <string>
#include <vector>

#include "Platform/Posix/ErrorDescription.h"
#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// Runs command-line tools as child processes, on both systems.
///
/// A tool gets the program's environment, the null device as standard input and standard error, and
/// no other open descriptor. All signals are unblocked and have their default actions. `executable`
/// is a path; it is not searched for.
class SpawnedTaskLauncher : public tidewell::TaskLauncher {
 public:
  /// `describe` makes the text that says why a launch failed.
  explicit SpawnedTaskLauncher(ErrorDescription describe) : describe_(describe) {}

  Launch launch(const std::string& executable, const std::vector<std::string>& arguments) override;

 private:
  ErrorDescription describe_;
};

}  // namespace platform
