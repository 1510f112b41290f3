#pragma once

#include <fcntl.h>

#include <array>
#include <utility>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {

/// Both ends of a pipe, which no program that this process starts inherits. Both are empty when the
/// pipe could not be made; `errno` says why then.
struct Pipe {
  static Pipe make() {
    std::array<int, 2> ends{-1, -1};
    if (pipe(ends.data()) != 0) return {};
    Pipe made{Descriptor(ends[0]), Descriptor(ends[1])};
    for (const int end : ends)
      fcntl(end, F_SETFD, FD_CLOEXEC);
    return made;
  }

  explicit operator bool() const { return static_cast<bool>(reading); }

  Descriptor reading;
  Descriptor writing;
};

}  // namespace platform
