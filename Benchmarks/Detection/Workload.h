#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"

/// A command in a session of its own, with everything that it starts. Its streams go to /dev/null.
///
/// It runs below a process of its own (`WorkloadKeeper`), which the constructor forks: make this
/// before there is any other thread, and before the program that is measured looks around. Main
/// thread only.
class Workload {
 public:
  Workload();
  /// Kills everything and waits until it is gone.
  ~Workload();
  Workload(const Workload&) = delete;
  Workload& operator=(const Workload&) = delete;

  /// False when the command cannot be started. Only one at a time.
  bool start(const std::vector<std::string>& command);

  /// Whether the command itself still runs.
  bool isRunning();

  /// The exit status of the command if it ended, 128 and the signal's number if by a signal. As of
  /// the last call of another operation.
  [[nodiscard]] std::optional<int> exitStatus() const { return status_; }

  /// Kills everything and waits until it is gone.
  void endAll();

 private:
  bool order(const std::string& message);
  std::optional<std::string> hear(int flags);

  platform::Descriptor socket_;
  pid_t keeper_ = 0;
  bool isStarted_ = false;
  std::optional<int> status_;
};
