#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <utility>

#include "Platform/Posix/Files/Descriptor.h"
#include "Platform/Posix/Files/Pipe.h"

namespace platform::testing {

/// A child process that does `work` and then waits to be killed. It ends with the test at the
/// latest.
class PausedChild {
 public:
  explicit PausedChild(const std::function<void()>& work) {
    Pipe done = Pipe::make();
    Pipe leash = Pipe::make();
    if (!done || !leash) return;
    pid_ = fork();
    char byte = 1;
    if (pid_ == 0) {
      leash.writing.reset();
      work();
      // The read ends when the parent does.
      const bool isOver =
          write(done.writing.get(), &byte, 1) == 1 && read(leash.reading.get(), &byte, 1) == 0;
      _exit(isOver ? 0 : 1);
    }
    leash_ = std::move(leash.writing);
    done.writing.reset();
    if (read(done.reading.get(), &byte, 1) != 1)
      ADD_FAILURE() << "the child did not finish its work";
  }
  ~PausedChild() {
    if (pid_ > 0) end();
  }
  PausedChild(const PausedChild&) = delete;
  PausedChild& operator=(const PausedChild&) = delete;

  [[nodiscard]] pid_t pid() const { return pid_; }

  /// Kills and reaps the child. Returns what the kernel has charged it.
  rusage end() {
    rusage usage{};
    kill(pid_, SIGKILL);
    wait4(pid_, nullptr, 0, &usage);
    pid_ = 0;
    return usage;
  }

  void killWithoutReaping() const {
    kill(pid_, SIGKILL);
    siginfo_t info{};
    waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOWAIT);
  }

 private:
  pid_t pid_ = 0;
  Descriptor leash_;
};

/// Uses the given processor time.
inline void burn(double seconds) {
  timespec time{};
  do {
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  } while (static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9 < seconds);
}

inline double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace platform::testing
