#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Both ends of a pipe. Neither end has the number of a standard stream, even in a program that was
/// started without standard streams. Both are empty when the pipe could not be made; then `errno`
/// says why.
///
/// Programs that this process starts do not inherit the ends. On macOS, making a pipe takes two
/// steps. A program that another thread starts between them inherits the ends, unless the program
/// is started as in `SpawnedTaskLauncher`.
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
