#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidewell {

/// One running command-line tool whose standard output is read through a pipe and whose standard
/// error goes nowhere.
///
/// Owned by whoever launched it. Its destructor closes the pipe, and terminates the tool if it
/// still runs. Any thread may call `terminate`; only one thread may call the rest.
class Task {
 public:
  virtual ~Task() = default;

  /// Reads standard output until the tool closes it. Blocks without a limit of time; `terminate`
  /// ends the wait. Absent when the tool writes more than `limit` bytes, of which the rest is not
  /// read.
  virtual std::optional<std::string> readToEnd(std::size_t limit) = 0;

  virtual bool isRunning() = 0;

  /// Asks the tool to stop, and ends a `readToEnd` that is under way. Harmless when the tool has
  /// ended.
  virtual void terminate() = 0;
};

/// Starts command-line tools. Safe to use from any one thread at a time.
class TaskLauncher {
 public:
  /// Exactly one of the two is set: the task, or why it could not be launched, for people to read.
  struct Launch {
    std::unique_ptr<Task> task;
    std::string error;
  };

  virtual ~TaskLauncher() = default;
  virtual Launch launch(const std::string& executable,
                        const std::vector<std::string>& arguments) = 0;
};

}  // namespace tidewell
