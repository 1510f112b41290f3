#pragma once

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace platform::testing {

/// A program that runs beside the test and is killed when the test ends.
class ChildProgram {
 public:
  ChildProgram() = default;
  /// `before` runs in the child. When it returns false, the child ends.
  explicit ChildProgram(
      const std::vector<std::string>& arguments,
      const std::function<bool()>& before = [] { return true; }) {
    pid_ = ::fork();
    if (pid_ != 0) return;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::vector<char*> pointers;
    for (const std::string& argument : arguments) {
      pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    if (before()) ::execvp(pointers[0], pointers.data());
    ::_exit(127);
  }
  ~ChildProgram() { kill(); }
  ChildProgram(ChildProgram&& other) noexcept : pid_(std::exchange(other.pid_, -1)) {}
  ChildProgram& operator=(ChildProgram&& other) noexcept {
    if (this != &other) {
      kill();
      pid_ = std::exchange(other.pid_, -1);
    }
    return *this;
  }

  [[nodiscard]] pid_t pid() const { return pid_; }

  /// Kills the program and waits until it is gone.
  void kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }

 private:
  pid_t pid_ = -1;
};

/// Switches off the output of the calling process, for programs that write too much.
inline bool silence() {
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  return ::dup2(nowhere, STDOUT_FILENO) >= 0 && ::dup2(nowhere, STDERR_FILENO) >= 0;
}

/// Whether `program` is in the search path.
inline bool isInstalled(const std::string& program) {
  const std::string path = ::getenv("PATH") != nullptr ? ::getenv("PATH") : "";
  std::string::size_type begin = 0;
  while (begin <= path.size()) {
    const auto end = std::min(path.find(':', begin), path.size());
    if (::access((path.substr(begin, end - begin) + "/" + program).c_str(), X_OK) == 0) return true;
    begin = end + 1;
  }
  return false;
}

}  // namespace platform::testing
