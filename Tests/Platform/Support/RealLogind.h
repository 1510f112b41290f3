#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>

#include "Tests/Platform/Support/ChildProgram.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform::testing {

/// The machine's own systemd-logind, on the bus that the environment names. It runs in a mount
/// namespace of its own, where a folder of the test stands in for /run/systemd. So it disturbs
/// neither the logind of the machine nor that of another test.
class RealLogind {
 public:
  static constexpr const char* kProgram = "/lib/systemd/systemd-logind";

  /// Why it cannot run here; absent when it can.
  static std::optional<std::string> obstacle() {
    if (::geteuid() != 0) return "systemd-logind runs as root only";
    if (::access(kProgram, X_OK) != 0) return "systemd-logind is not installed";
    if (!std::filesystem::is_directory("/run/systemd")) return "there is no /run/systemd";
    if (!mayHaveAMountNamespace()) return "mount namespaces are not allowed here";
    return std::nullopt;
  }

  RealLogind() { start(); }

  void start() {
    const std::string state = state_.path();
    logind_ = ChildProgram({kProgram}, [state] { return silence() && hide(state); });
  }
  /// Ends it. Its record of its locks stays on the disk.
  void stop() { logind_.kill(); }
  /// Stops and continues logind, which hangs meanwhile.
  void freeze() { ::kill(logind_.pid(), SIGSTOP); }
  void thaw() { ::kill(logind_.pid(), SIGCONT); }
  /// Where it keeps what stands below /run/systemd elsewhere.
  [[nodiscard]] const std::filesystem::path& state() const { return state_.path(); }
  /// Removes the record of its locks.
  void forget() const {
    for (const auto& entry : std::filesystem::directory_iterator(state_.path())) {
      std::filesystem::remove_all(entry.path());
    }
  }

 private:
  static bool hide(const std::string& state) {
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount(state.c_str(), "/run/systemd", nullptr, MS_BIND, nullptr) == 0;
  }

  static bool mayHaveAMountNamespace() {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(hide("/run/systemd") ? 0 : 1);
    int status = 1;
    return ::waitpid(child, &status, 0) == child && status == 0;
  }

  TemporaryFolder state_;
  ChildProgram logind_;
};

}  // namespace platform::testing
