#pragma once

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform::testing {

/// Namespaces in which a test program finds only its own processes: the other work of the machine
/// does not exist there, neither for the test program nor for the programs that it starts. There,
/// /proc shows only these processes, and there is no system manager, no battery, no desktop's unit,
/// and no network but the loopback.
///
/// A user who may not open such namespaces directly opens them in a user namespace, where this user
/// is root. Where that is not allowed either, `run` runs the tests among all processes, and
/// `obstacle` tells why.
class ProcessNamespace {
 public:
  /// Runs `tests` and returns their status. Call it once, in `main`, before any thread starts.
  /// Whatever the tests leave running is killed when they end, or when this process ends.
  static int run(const std::function<int()>& tests) {
    if (!isAllowed()) {
      reason() = "no process namespace may be opened here";
      return tests();
    }
    reason().reset();
    return runInside(tests);
  }

  /// Why the tests see other processes than their own; absent when they do not.
  static std::optional<std::string> obstacle() { return reason(); }

 private:
  static std::optional<std::string>& reason() {
    static std::optional<std::string> reason = "the test program opened no process namespace";
    return reason;
  }

  /// A child tries it, because no process can leave a namespace again.
  static bool isAllowed() {
    return statusOf([] { return runInside([] { return 0; }); }) == 0;
  }

  static int runInside(const std::function<int()>& tests) {
    if (!enter()) return 1;
    // The first process of a namespace gets all orphans and no signals, so the tests are another.
    return statusOf([&tests] { return furnish() ? statusOf(tests) : 1; });
  }

  /// Opens the namespaces. The next child is the first process there.
  static bool enter() {
    constexpr int kNamespaces = CLONE_NEWPID | CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWNET;
    if (::unshare(kNamespaces) == 0) return true;
    const std::string user = std::to_string(::geteuid());
    const std::string group = std::to_string(::getegid());
    return ::unshare(kNamespaces | CLONE_NEWUSER) == 0 && write("setgroups", "deny") &&
           write("uid_map", "0 " + user + " 1") && write("gid_map", "0 " + group + " 1");
  }
  static bool write(const std::string& file, const std::string& text) {
    std::ofstream stream("/proc/self/" + file);
    return static_cast<bool>(stream << text << std::flush);
  }

  static bool furnish() {
    return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) == 0 &&
           empty("/run/systemd") && empty("/sys/class/power_supply") && hasLoopback();
  }
  /// In a new network the loopback is switched off at first.
  static bool hasLoopback() {
    const Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq request{};
    std::strncpy(request.ifr_name, "lo", sizeof request.ifr_name - 1);
    if (::ioctl(socket.get(), SIOCGIFFLAGS, &request) != 0) return false;
    request.ifr_flags |= IFF_UP;
    return ::ioctl(socket.get(), SIOCSIFFLAGS, &request) == 0;
  }
  static bool empty(const char* folder) {
    return !std::filesystem::is_directory(folder) ||
           ::mount("tmpfs", folder, "tmpfs", MS_NOSUID | MS_NODEV, "mode=755") == 0;
  }

  static pid_t child(const std::function<int()>& body) {
    std::fflush(nullptr);
    const pid_t pid = ::fork();
    if (pid != 0) return pid;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int status = body();
    std::fflush(nullptr);
    ::_exit(status);
  }

  static int reapUntilEndOf(pid_t wanted) {
    int status = 0;
    for (pid_t ended = 0; ended != wanted;) {
      ended = ::wait(&status);
      if (ended < 0) return 1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  static int statusOf(const std::function<int()>& body) { return reapUntilEndOf(child(body)); }
};

}  // namespace platform::testing
