#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Both ends of a pipe, neither with the number of a standard stream, not even in a program that
/// was started without one. Both are empty when the pipe could not be made; `errno` says why then.
///
/// No program that this process starts inherits them. macOS knows no pipe that is made so at one
/// stroke: a program that another thread starts there at that very moment may inherit them, unless
/// it is started as `SpawnedTaskLauncher` does.
struct Pipe {
  static Pipe make() {
    std::array<int, 2> ends{-1, -1};
    if (!open(ends)) return {};
    Descriptor reading(ends[0]);
    Descriptor writing(ends[1]);
    Pipe made{aboveStandardStreams(std::move(reading)), aboveStandardStreams(std::move(writing))};
    return made.reading && made.writing ? std::move(made) : Pipe();
  }

  explicit operator bool() const { return static_cast<bool>(reading); }

  Descriptor reading;
  Descriptor writing;

 private:
#ifdef __APPLE__
  static bool open(std::array<int, 2>& ends) {
    if (pipe(ends.data()) != 0) return false;
    for (const int end : ends)
      fcntl(end, F_SETFD, FD_CLOEXEC);
    return true;
  }
#else
  static bool open(std::array<int, 2>& ends) {
    return pipe2(ends.data(), O_CLOEXEC) == 0;
  }
#endif

  static Descriptor aboveStandardStreams(Descriptor end) {
    if (end.get() > STDERR_FILENO) return end;
    return Descriptor(fcntl(end.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  }
};

}  // namespace platform
