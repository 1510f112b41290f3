#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstddef>

namespace platform::testing {

/// Makes this process one that was started without any standard stream, until the end of the scope.
class ClosedStandardStreams {
 public:
  ClosedStandardStreams() {
    for (int number = 0; number <= STDERR_FILENO; ++number) {
      kept_.at(static_cast<std::size_t>(number)) =
          fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    }
    for (int number = 0; number <= STDERR_FILENO; ++number)
      close(number);
  }
  ~ClosedStandardStreams() {
    for (int number = 0; number <= STDERR_FILENO; ++number) {
      const int kept = kept_.at(static_cast<std::size_t>(number));
      dup2(kept, number);
      close(kept);
    }
  }
  ClosedStandardStreams(const ClosedStandardStreams&) = delete;
  ClosedStandardStreams& operator=(const ClosedStandardStreams&) = delete;

 private:
  std::array<int, 3> kept_{-1, -1, -1};
};

}  // namespace platform::testing
