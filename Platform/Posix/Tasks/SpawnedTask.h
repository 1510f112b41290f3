#pragma once

#include <sys/types.h>

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/Posix/Files/Pipe.h"
#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// A child process whose standard output is read through a pipe.
///
/// `terminate` sends SIGTERM to the child. A read that is under way then ends with what has come so
/// far, even if the child does not obey.
///
/// The destructor sends SIGTERM to a child that still runs, and SIGKILL if the child does not obey
/// soon. It reaps the child and returns within about half a second. A child that the system cannot
/// end that fast is reaped by another thread when it ends.
class SpawnedTask : public tidewell::Task {
 public:
  /// `child` is a child of this process, for which nobody else waits. `output` is the reading end
  /// of its pipe. `wake` is a pipe that nobody else uses; it ends a wait. None of them is empty.
  SpawnedTask(pid_t child, Descriptor output, Pipe wake);
  ~SpawnedTask() override;
  SpawnedTask(const SpawnedTask&) = delete;
  SpawnedTask& operator=(const SpawnedTask&) = delete;

  std::optional<std::string> readToEnd(std::size_t limit) override;
  bool isRunning() override;
  void terminate() override;

 private:
  enum class Wait { output, ended };
  [[nodiscard]] Wait waitForOutput() const;
  void signal(int number);
  void wakeReader();
  bool endsSoon();

  /// Guards `child_` and `isWoken_`. The number of a reaped child may already belong to another
  /// process.
  std::mutex lock_;
  pid_t child_;  ///< 0 after the child was reaped.
  Descriptor output_;
  const Pipe wake_;
  bool isWoken_ = false;
};

}  // namespace platform
