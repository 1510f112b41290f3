#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

/// A command in a session of its own, with everything that it starts. Its streams go to /dev/null.
///
/// Whatever of it loses its parent becomes a child of this process, so that nothing is left behind
/// when this object goes. Only one at a time, and this process has no other children. Main thread
/// only.
class Workload {
 public:
  Workload();
  ~Workload();
  Workload(const Workload&) = delete;
  Workload& operator=(const Workload&) = delete;

  /// False when the command cannot be started.
  bool start(const std::vector<std::string>& command);

  /// Reaps what has ended, and tells whether anything is left. Call it now and then.
  bool reap();

  /// Whether the command itself still runs, as of the last `reap`.
  [[nodiscard]] bool isRunning() const { return pid_ > 0 && !status_; }

  /// The exit status of the command if it ended, 128 and the signal's number if by a signal.
  [[nodiscard]] std::optional<int> exitStatus() const { return status_; }

  /// Kills everything and waits until it is gone.
  void endAll();

 private:
  pid_t pid_ = 0;
  std::optional<int> status_;
};
