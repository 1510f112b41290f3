#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"

/// A process between the harness and the workload. The program that is measured leaves out what it
/// has started itself, so the workload must be another process's. Whatever of the workload loses
/// its parent becomes a child of the keeper, so that nothing is left behind.
///
/// It takes orders from a socket, one a message: `kStart` and the words of the command with a NUL
/// after each, or `kEnd`. It answers an order with `kDone` or `kFailed`, and says `kExit` and the
/// status when the command has ended. It kills everything when the other end of the socket is
/// closed.
class WorkloadKeeper {
 public:
  static constexpr char kStart = 'S';
  static constexpr char kEnd = 'E';
  static constexpr char kDone = 'd';
  static constexpr char kFailed = 'f';
  static constexpr char kExit = 'x';
  static constexpr std::size_t kLongestMessage = 65536;

  explicit WorkloadKeeper(platform::Descriptor socket);

  /// Serves until the other end is closed. Afterwards there is nothing left of the workload.
  void run();

 private:
  bool obey();
  bool start(const std::string& words);
  bool reap();
  void endAll();
  void say(const std::string& message);

  platform::Descriptor socket_;
  platform::Descriptor childEnds_;
  pid_t pid_ = 0;
};
