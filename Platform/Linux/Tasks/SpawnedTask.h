#pragma once

#include <sys/types.h>

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/Linux/Files/Descriptor.h"
#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// A child process whose standard output is read through a pipe.
///
/// `terminate` sends SIGTERM and ends a read that is under way with what has come so far, whether
/// the child obeys or not. The destructor sends SIGTERM to a child that still runs and SIGKILL to
/// one that has not obeyed soon after, and always reaps it: no zombie stays.
class SpawnedTask : public tidewell::Task {
 public:
  /// `child` is a process of ours that nobody else waits for; `output` the reading end of its
  /// pipe, `wake` an event descriptor, both non-empty.
  SpawnedTask(pid_t child, Descriptor output, Descriptor wake);
  ~SpawnedTask() override;
  SpawnedTask(const SpawnedTask&) = delete;
  SpawnedTask& operator=(const SpawnedTask&) = delete;

  std::optional<std::string> readToEnd(std::size_t limit) override;
  bool isRunning() override;
  void terminate() override;

 private:
  enum class Wait { output, ended };
  Wait waitForOutput() const;
  void signal(int number);
  void wakeReader() const;
  bool endsSoon();

  std::mutex lock_;  ///< Guards `child_`: a number that was reaped may already be another process.
  pid_t child_;      ///< 0 once reaped.
  Descriptor output_;
  const Descriptor wake_;
};

}  // namespace platform
