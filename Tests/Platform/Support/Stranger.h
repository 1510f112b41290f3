#pragma once

#include <grp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <optional>
#include <string>

#include "Tests/Platform/Support/ChildProgram.h"
#include "Tests/Platform/Support/PrivateBus.h"

namespace platform::testing {

/// Waits until the bus has handled everything that was sent on this connection.
inline bool askTheBus(sd_bus* bus) {
  return sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                            "org.freedesktop.DBus", "GetId", nullptr, nullptr, nullptr) >= 0;
}

/// Another user of the machine, who sends to a bus what the test wants.
class Stranger {
 public:
  /// The user and group `nobody` of every Linux.
  static constexpr unsigned kIdentifier = 65534;

  /// Why a stranger is not possible here; absent when it is possible.
  static std::optional<std::string> obstacle() {
    // Nor can root of a user namespace, where there may be nobody else.
    if (!runs([] { return become(); })) return "only root can act as another user";
    if (::access(PrivateBus::kSystemPolicy, R_OK) != 0) return "the system bus has no policy here";
    return std::nullopt;
  }

  /// Makes the calling process a process of the stranger. False when that is not allowed.
  static bool become() {
    return ::setgroups(0, nullptr) == 0 &&
           ::setresgid(kIdentifier, kIdentifier, kIdentifier) == 0 &&
           ::setresuid(kIdentifier, kIdentifier, kIdentifier) == 0 &&
           ::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0;
  }

  /// Connects to a bus. Null when the bus refuses.
  static sd_bus* connect(const std::string& address) {
    sd_bus* bus = nullptr;
    const bool isConnected = sd_bus_new(&bus) >= 0 &&
                             sd_bus_set_address(bus, address.c_str()) >= 0 &&
                             sd_bus_set_bus_client(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
    return isConnected && askTheBus(bus) ? bus : nullptr;
  }

  /// Runs `act` in a process of the stranger, on a connection of its own, and waits until the bus
  /// has handled everything that was sent. The result is that of `act`, or false when the bus
  /// refused the connection.
  static bool acts(const std::string& address, const std::function<bool(sd_bus*)>& act) {
    return runs([&] { return isIn(address, act); });
  }
  /// Does the same without waiting. The process ends with 0 when `act` returned true.
  static ChildProgram start(const std::string& address, const std::function<bool(sd_bus*)>& act) {
    return ChildProgram({"stranger"}, [&]() -> bool { ::_exit(isIn(address, act) ? 0 : 1); });
  }

  /// Sends a signal to one connection alone.
  template <class... Arguments>
  static bool sendSignal(sd_bus* bus, const std::string& to, const char* path,
                         const char* interface, const char* member, const char* types,
                         Arguments... arguments) {
    sd_bus_message* signal = nullptr;
    const bool isSent = sd_bus_message_new_signal(bus, &signal, path, interface, member) >= 0 &&
                        sd_bus_message_append(signal, types, arguments...) >= 0 &&
                        sd_bus_send_to(bus, signal, to.c_str(), nullptr) >= 0;
    sd_bus_message_unref(signal);
    return isSent;
  }

 private:
  static bool isIn(const std::string& address, const std::function<bool(sd_bus*)>& act) {
    sd_bus* bus = become() ? connect(address) : nullptr;
    return bus != nullptr && act(bus) && askTheBus(bus);
  }

  /// Runs `body` in a process of its own and returns its result. `body` runs again when it has not
  /// ended after a minute: another thread may have held a lock of the sanitizers' allocator at the
  /// moment of the fork, and then the new process waits for that lock for ever.
  static bool runs(const std::function<bool()>& body) {
    int status = 1;
    for (int attempt = 0; attempt < 3; ++attempt) {
      const pid_t child = ::fork();
      if (child == 0) {
        ::alarm(60);
        ::_exit(body() ? 0 : 1);
      }
      if (::waitpid(child, &status, 0) != child) return false;
      if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGALRM) break;
    }
    return status == 0;
  }
};

}  // namespace platform::testing
