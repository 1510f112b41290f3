// Asks the real program for a window on silent, stopped and refusing displays. The program must go
// on as if nobody had asked.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>

#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Campaign/Campaigns.h"
#include "Tests/EndToEnd/OwnMachine.h"
#include "Tests/Platform/Support/SilentDisplay.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using platform::testing::ChildProgram;
using platform::testing::ScopedEnvironment;
using testing::OwnMachine;

/// An X server with a screen that nobody sees, under a number that nobody uses.
class XServer {
 public:
  XServer() {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return;
    const platform::Descriptor reading(ends[0]);
    platform::Descriptor writing(ends[1]);
    const std::string descriptor = std::to_string(writing.get());
    server_ = ChildProgram(
        {"Xvfb", "-displayfd", descriptor, "-screen", "0", "640x480x24", "-nolisten", "tcp"},
        [&writing] {
          return ::fcntl(writing.get(), F_SETFD, 0) == 0 && platform::testing::silence();
        });
    writing.reset();
    // The server writes its number when it is ready, and then the end of the line with a second
    // call. It ends if nobody reads that second part.
    std::string line;
    char next = 0;
    while (::read(reading.get(), &next, 1) == 1 && next != '\n')
      line += next;
    if (next == '\n') number_ = line;
  }
  ~XServer() {
    server_.kill();
    if (number_.empty()) return;
    // The server was killed and could not remove these files.
    ::unlink(("/tmp/.X11-unix/X" + number_).c_str());
    ::unlink(("/tmp/.X" + number_ + "-lock").c_str());
  }
  XServer(const XServer&) = delete;
  XServer& operator=(const XServer&) = delete;

  [[nodiscard]] bool isThere() const { return !number_.empty(); }
  [[nodiscard]] std::string name() const { return ":" + number_; }
  void freeze() const { ::kill(server_.pid(), SIGSTOP); }

 private:
  std::string number_;
  ChildProgram server_;
};

/// Tries one display after the other on one machine, each with a program of its own.
class Displays {
 public:
  explicit Displays(OwnMachine& machine) : machine_(machine) {}

  Outcome outcome;
  Clock::duration slowest{};

  void trySilent() {
    platform::testing::SilentDisplay display;
    askForAWindow("a silent display", display.name(),
                  [&display](pid_t) { return display.wasAsked(); });
  }

  void tryStopped() {
    const XServer server;
    if (!server.isThere()) return find("No X server could be started.");
    server.freeze();
    askForAWindow("a stopped display", server.name(), hasChild);
  }

  void tryRefusing() {
    askForAWindow("a refusing display", ":4999", [this](pid_t) {
      return machine_.output("err").find("the display cannot be used") != std::string::npos;
    });
  }

  /// Tries a display that answers until there is a window.
  void tryStoppedLater() {
    const XServer server;
    const ScopedEnvironment x("DISPLAY", server.name());
    const ScopedEnvironment wayland("WAYLAND_DISPLAY", std::nullopt);
    if (!server.isThere()) return find("No X server could be started.");
    const ChildProgram staylit = start();
    ++outcome.runs;
    if (!holds()) return find("There was no hold to begin with.");
    OwnMachine::wait(machine_.start({"--settings"}));
    if (!OwnMachine::eventually([&staylit] { return hasWindows(staylit.pid()); }, 60s)) {
      return find("On a display that answers there was no window. " + machine_.output("err"));
    }
    server.freeze();
    // The second window gives the program something new to ask of the display.
    OwnMachine::wait(machine_.start({"--choose-apps"}));
    const auto begin = Clock::now();
    ::kill(staylit.pid(), SIGTERM);
    if (!OwnMachine::hasEnded(staylit, 45s))
      return find("A display that stopped later held up the end.");
    slowestEnd = std::max(slowestEnd, Clock::now() - begin);
    // The login service notices the end a moment later.
    const bool isReleased =
        OwnMachine::eventually([this] { return machine_.holdReason().empty(); }, 5s);
    if (!isReleased) find("A hold outlived the program by 5 s.");
  }
  Clock::duration slowestEnd{};

 private:
  void askForAWindow(const std::string& what, const std::string& display,
                     const std::function<bool(pid_t)>& wasTried) {
    const ScopedEnvironment x("DISPLAY", display);
    const ScopedEnvironment wayland("WAYLAND_DISPLAY", std::nullopt);
    const ChildProgram staylit = start();
    ++outcome.runs;
    if (!holds()) return find("There was no hold to begin with.");
    if (OwnMachine::wait(machine_.start({"--settings"})) != 0) {
      find("On " + what + " a request for a window was not answered.");
    }
    const auto tried = [&] { return wasTried(staylit.pid()); };
    if (!OwnMachine::eventually(tried, 30s)) find("Nobody tried " + what + ".");
    const auto begin = Clock::now();
    OwnMachine::wait(machine_.start({"--pause"}));
    const bool isReleased =
        OwnMachine::eventually([this] { return machine_.holdReason().empty(); }, 5s);
    if (!isReleased) find("On " + what + " the hold was not released within 5 s.");
    slowest = std::max(slowest, Clock::now() - begin);
    ::kill(staylit.pid(), SIGTERM);
    if (!OwnMachine::hasEnded(staylit, 10s)) return find("On " + what + " SIGTERM was not heard.");
    if (OwnMachine::wait(staylit) != 0) find("On " + what + " it did not end in order.");
  }

  /// Starts the program once the login service has forgotten the hold of the program before, which
  /// may have been killed. Then every hold that is seen is this program's.
  ChildProgram start() {
    OwnMachine::eventually([this] { return machine_.holdReason().empty(); }, 20s);
    return machine_.start();
  }
  bool holds() {
    return OwnMachine::eventually([this] { return !machine_.holdReason().empty(); }, 30s);
  }
  /// Whether the program has started a process that tries the display.
  static bool hasChild(pid_t pid) {
    const std::string number = std::to_string(pid);
    std::ifstream children("/proc/" + number + "/task/" + number + "/children");
    return !std::string(std::istreambuf_iterator<char>(children), {}).empty();
  }
  /// Whether that process has loaded the library that speaks with X.
  static bool hasWindows(pid_t pid) {
    std::ifstream maps("/proc/" + std::to_string(pid) + "/maps");
    for (std::string line; std::getline(maps, line);) {
      if (line.find("libqxcb") != std::string::npos) return true;
    }
    return false;
  }
  void find(std::string finding) { outcome.findings.push_back(std::move(finding)); }

  OwnMachine& machine_;
};

std::string milliseconds(Clock::duration time) {
  return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(time).count()) +
         " ms";
}

}  // namespace

Outcome displays(Effort effort) {
  if (const auto obstacle = OwnMachine::obstacle()) return notPossible(*obstacle);
  if (!platform::testing::isInstalled("Xvfb")) return notPossible("Xvfb is not installed");
  OwnMachine machine;
  if (!machine.begin()) return notPossible("logind does not answer");
  Displays displays(machine);
  const int times = effort.quick ? 3 : 20;
  for (int number = 0; number < times; ++number) {
    displays.trySilent();
    displays.tryStopped();
    displays.tryRefusing();
  }
  displays.outcome.measured = "released within " + milliseconds(displays.slowest);
  return displays.outcome;
}

Outcome displaysThatStopLater(Effort effort) {
  if (effort.quick) return notPossible("one run takes longer than a quick one may");
  if (const auto obstacle = OwnMachine::obstacle()) return notPossible(*obstacle);
  if (!platform::testing::isInstalled("Xvfb")) return notPossible("Xvfb is not installed");
  OwnMachine machine;
  if (!machine.begin()) return notPossible("logind does not answer");
  Displays displays(machine);
  for (int number = 0; number < 20; ++number)
    displays.tryStoppedLater();
  displays.outcome.measured = "ended within " + milliseconds(displays.slowestEnd);
  return displays.outcome;
}

}  // namespace staylit::campaign
