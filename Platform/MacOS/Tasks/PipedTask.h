#pragma once

#import <Foundation/Foundation.h>

#include <mutex>

#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// A launched task of Foundation and the pipe that it writes to.
class PipedTask final : public tidewell::Task {
 public:
  /// `task` has been launched with `output` as its standard output; `wake` is a pipe of nobody
  /// else's, which ends a wait.
  PipedTask(NSTask* task, NSPipe* output, NSPipe* wake);
  ~PipedTask() override;
  PipedTask(const PipedTask&) = delete;
  PipedTask& operator=(const PipedTask&) = delete;

  /// Once `terminate` was called, what has been read until then.
  std::optional<std::string> readToEnd(std::size_t limit) override;
  bool isRunning() override;
  void terminate() override;

 private:
  bool waitForOutput() const;

  /// A task object is not made for two threads at a time.
  std::mutex lock_;
  NSTask* const task_;
  bool isWoken_ = false;
  NSFileHandle* const output_;
  NSPipe* const wake_;
  const int outputDescriptor_;
  const int wakeDescriptor_;
};

}  // namespace platform
