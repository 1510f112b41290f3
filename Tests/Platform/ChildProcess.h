#pragma once

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

namespace platform {

/// A child process that runs `body` and ends without any clean-up, as after a crash.
class ChildProcess {
 public:
  explicit ChildProcess(const std::function<void()>& body) : pid_(fork()) {
    if (pid_ != 0) return;
    body();
    _exit(0);
  }
  ~ChildProcess() { wait(); }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Waits for its end. True when it ended by itself with status 0.
  bool wait() {
    if (pid_ <= 0) return false;
    int status = -1;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

 private:
  pid_t pid_;
};

/// Runs `body` in a child and returns its result. Empty when the child dies before.
inline std::string inChild(const std::function<std::string()>& body) {
  int ends[2] = {-1, -1};
  if (pipe(ends) != 0) return "no pipe";
  std::string answer;
  {
    const ChildProcess child([&] {
      const std::string result = body();
      if (write(ends[1], result.data(), result.size()) < 0) _exit(1);
    });
    close(ends[1]);
    char buffer[4096];
    for (ssize_t count = 0; (count = read(ends[0], buffer, sizeof buffer)) > 0;)
      answer.append(buffer, static_cast<std::size_t>(count));
  }
  close(ends[0]);
  return answer;
}

/// Does the same as `inChild`, with the rights of an ordinary user even when root runs the test.
inline std::string asOrdinaryUser(const std::function<std::string()>& body) {
  return inChild([&body]() -> std::string {
    constexpr uid_t nobody = 65534;
    const bool isRoot = geteuid() == 0;
    if (isRoot && (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0)) {
      return "cannot become an ordinary user";
    }
    return body();
  });
}

}  // namespace platform
