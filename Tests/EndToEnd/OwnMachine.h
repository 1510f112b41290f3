#pragma once

#include <fcntl.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Platform/Support/ChildProgram.h"
#include "Tests/Platform/Support/PrivateBus.h"
#include "Tests/Platform/Support/ProcessNamespace.h"
#include "Tests/Platform/Support/RealLogind.h"
#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit::testing {

using platform::testing::ChildProgram;
using platform::testing::PrivateBus;
using platform::testing::ProcessNamespace;
using platform::testing::RealLogind;
using platform::testing::ScopedEnvironment;
using platform::testing::TemporaryFolder;

/// Takes a lock of logind, which lasts as long as the descriptor is open. Empty when logind gives
/// none.
inline platform::Descriptor inhibit(platform::Bus& bus, const std::string& what,
                                    const std::string& who, const std::string& why) {
  const auto reply = bus.call({"org.freedesktop.login1", "/org/freedesktop/login1",
                               "org.freedesktop.login1.Manager", "Inhibit"},
                              [&](sd_bus_message* call) {
                                return sd_bus_message_append(call, "ssss", what.c_str(),
                                                             who.c_str(), why.c_str(), "block");
                              });
  int lock = -1;
  if (!reply || sd_bus_message_read(reply.message.get(), "h", &lock) < 0) return {};
  return platform::Descriptor(::fcntl(lock, F_DUPFD_CLOEXEC, 3));
}

/// A machine of its own: it has no processes but this program's, a system bus with the real logind,
/// a session bus with nothing on it, and an empty settings folder. Programs that are started see no
/// other machine. Use one at a time, in a program whose `main` uses `ProcessNamespace`.
class OwnMachine {
 public:
  /// Why there can be no such machine here; absent when there can.
  static std::optional<std::string> obstacle() {
    if (const auto obstacle = ProcessNamespace::obstacle()) return obstacle;
    if (const auto obstacle = RealLogind::obstacle()) return obstacle;
    if (!platform::testing::isInstalled("dbus-daemon")) return "dbus-daemon is not installed";
    return std::nullopt;
  }

  using Policy = PrivateBus::Policy;

  /// Starts the buses and logind, and waits until logind answers. False when it does not.
  bool begin(Policy ofSystemBus = Policy::own, Policy ofSessionBus = Policy::own) {
    systemDaemon.emplace(ofSystemBus);
    sessionDaemon.emplace(ofSessionBus);
    environment_.emplace_back(
        std::make_unique<ScopedEnvironment>("DBUS_SYSTEM_BUS_ADDRESS", systemDaemon->address()));
    environment_.emplace_back(
        std::make_unique<ScopedEnvironment>("DBUS_SESSION_BUS_ADDRESS", sessionDaemon->address()));
    environment_.emplace_back(
        std::make_unique<ScopedEnvironment>("XDG_CONFIG_HOME", folder.path().string()));
    environment_.emplace_back(
        std::make_unique<ScopedEnvironment>("XDG_STATE_HOME", folder.path("state")));
    // The folder is this user's alone. No Staylit of the real machine has its lock there.
    environment_.emplace_back(
        std::make_unique<ScopedEnvironment>("XDG_RUNTIME_DIR", folder.path().string()));
    // Whatever the locale of the tests, what the programs write is what they write in most places.
    environment_.emplace_back(std::make_unique<ScopedEnvironment>("LC_ALL", "C.UTF-8"));
    logind.emplace();
    return eventually([this] { return inhibitors().has_value(); }, std::chrono::seconds(20));
  }

  /// `what|who|why|mode` of every inhibitor; absent while logind does not answer.
  std::optional<std::vector<std::string>> inhibitors() {
    const auto all = listInhibitors();
    if (!all) return std::nullopt;
    std::vector<std::string> texts;
    for (const Inhibitor& inhibitor : *all)
      texts.push_back(inhibitor.text);
    return texts;
  }

  /// How many locks the process has, of whatever kind; absent while logind does not answer.
  std::optional<std::size_t> locksOf(pid_t holder) {
    const auto all = listInhibitors();
    if (!all) return std::nullopt;
    return static_cast<std::size_t>(std::ranges::count(*all, holder, &Inhibitor::pid));
  }

  /// Takes a lock for this program, which lasts as long as the descriptor is open.
  platform::Descriptor inhibit(const std::string& what, const std::string& who,
                               const std::string& why) {
    return testing::inhibit(bus_, what, who, why);
  }

  /// Why all Staylits hold the machine awake, one reason for each hold.
  std::vector<std::string> holdReasons() {
    const std::string begin = "idle|Staylit|";
    const std::string end = "|block";
    std::vector<std::string> reasons;
    for (const std::string& inhibitor : inhibitors().value_or(std::vector<std::string>())) {
      if (!inhibitor.starts_with(begin) || !inhibitor.ends_with(end)) continue;
      reasons.push_back(
          inhibitor.substr(begin.size(), inhibitor.size() - begin.size() - end.size()));
    }
    return reasons;
  }
  /// Why one Staylit holds the machine awake; empty when none does.
  std::string holdReason() {
    const std::vector<std::string> reasons = holdReasons();
    return reasons.empty() ? "" : reasons.front();
  }

  void writeSettings(const std::string& text) const { folder.write("staylit/settings.toml", text); }
  [[nodiscard]] std::string settings() const {
    std::ifstream file(folder.path() / "staylit/settings.toml");
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
  }

  /// Starts the program with its output in a file that `output` reads.
  ChildProgram start(std::vector<std::string> arguments = {}) {
    arguments.insert(arguments.begin(), STAYLIT_PROGRAM);
    return ChildProgram(arguments, [this] {
      // A shell that runs the tests in the background may have these signals ignored.
      for (const int signal : {SIGINT, SIGHUP})
        std::signal(signal, SIG_DFL);
      const int out =
          ::open((folder.path() / "out").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
      const int err =
          ::open((folder.path() / "err").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
      return ::dup2(out, STDOUT_FILENO) >= 0 && ::dup2(err, STDERR_FILENO) >= 0;
    });
  }
  [[nodiscard]] std::string output(const std::string& name = "out") const {
    std::ifstream file(folder.path() / name);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
  }
  /// The exit status of a program that ends by itself or by a signal it handles.
  static int wait(const ChildProgram& program) {
    siginfo_t info{};
    ::waitid(P_PID, static_cast<id_t>(program.pid()), &info, WEXITED | WNOWAIT);
    return info.si_code == CLD_EXITED ? info.si_status : 128 + info.si_status;
  }
  /// Whether the program ends within `limit`, in whatever way.
  static bool hasEnded(const ChildProgram& program, std::chrono::seconds limit) {
    return eventually(
        [&program] {
          siginfo_t info{};
          ::waitid(P_PID, static_cast<id_t>(program.pid()), &info, WEXITED | WNOWAIT | WNOHANG);
          return info.si_pid == program.pid();
        },
        limit);
  }

  /// Starts the worker under a name of its own.
  ChildProgram workAs(const std::string& name, std::vector<std::string> arguments) {
    const std::string program = folder.path() / name;
    std::filesystem::copy_file(WORKER_PROGRAM, program);
    arguments.insert(arguments.begin(), program);
    return ChildProgram(arguments);
  }

  static bool eventually(const std::function<bool()>& condition, std::chrono::seconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
  }

  TemporaryFolder folder;
  std::optional<PrivateBus> systemDaemon;
  std::optional<PrivateBus> sessionDaemon;
  std::optional<RealLogind> logind;

 private:
  struct Inhibitor {
    pid_t pid = 0;
    std::string text;
  };

  std::optional<std::vector<Inhibitor>> listInhibitors() {
    const auto reply = bus_.call({"org.freedesktop.login1", "/org/freedesktop/login1",
                                  "org.freedesktop.login1.Manager", "ListInhibitors"});
    if (!reply) return std::nullopt;
    std::vector<Inhibitor> all;
    sd_bus_message* message = reply.message.get();
    sd_bus_message_enter_container(message, 'a', "(ssssuu)");
    const char *what = nullptr, *who = nullptr, *why = nullptr, *mode = nullptr;
    std::uint32_t uid = 0;
    std::uint32_t pid = 0;
    while (sd_bus_message_read(message, "(ssssuu)", &what, &who, &why, &mode, &uid, &pid) > 0) {
      all.push_back(
          {static_cast<pid_t>(pid), std::string(what) + "|" + who + "|" + why + "|" + mode});
    }
    return all;
  }

  std::vector<std::unique_ptr<ScopedEnvironment>> environment_;
  platform::EventLoop loop_;
  platform::Bus bus_{loop_, platform::Bus::Kind::system};
};

}  // namespace staylit::testing
