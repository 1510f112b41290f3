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
/// `terminate` sends SIGTERM and ends a read that is under way with what has come so far, whether
/// the child obeys or not. The destructor sends SIGTERM to a child that still runs and SIGKILL to
/// one that has not obeyed soon after, and returns within about half a second. It reaps the child;
/// one that the system cannot end at once is reaped by a thread of its own when it does end.
class SpawnedTask : public tidewell::Task {
 public:
  /// `child` is a process of ours that nobody else waits for; `output` the reading end of its
  /// pipe, `wake` a pipe of nobody else's, which ends a wait. None is empty.
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

  /// Guards `child_`, since a number that was reaped may already be another process, and
  /// `isWoken_`.
  std::mutex lock_;
  pid_t child_;  ///< 0 once reaped.
  Descriptor output_;
  const Pipe wake_;
  bool isWoken_ = false;
};

}  // namespace platform
