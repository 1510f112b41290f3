#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Platform/Linux/Settings/SettingsText.h"
#include "Tests/Campaign/Campaigns.h"
#include "Tests/EndToEnd/OwnMachine.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;

struct FailingCall {
  const char* call;
  int error;
};

constexpr std::array kFailingCalls = {
    FailingCall{"open", EMFILE},
    FailingCall{"socket", EMFILE},
    FailingCall{"read", EIO},
    FailingCall{"write", ENOSPC},
    FailingCall{"fsync", EIO},
    FailingCall{"rename", ENOSPC},
    FailingCall{"mkostemp", ENOSPC},
    FailingCall{"sendmsg", ENOMEM},
    FailingCall{"recvmsg", ENOMEM},
    FailingCall{"fork", ENOMEM},
    FailingCall{"pthread_create", EAGAIN},
    FailingCall{"clock_gettime", EINVAL},
};

class FailingCalls : testing::OwnMachine {
 public:
  Outcome run(Effort effort) {
    if (!begin()) return notPossible("logind does not answer");
    const auto end = std::chrono::steady_clock::now() + kQuickTime;
    for (int number = 1; number <= kCalls; ++number) {
      if (effort.quick && std::ranges::find(kQuickCalls, number) == kQuickCalls.end()) continue;
      for (const FailingCall& failure : kFailingCalls) {
        if (effort.quick && std::chrono::steady_clock::now() > end) break;
        tryOne(failure, number, effort);
      }
    }
    outcome_.measured = "made and failed: " + reachedOfEach();
    return outcome_;
  }

 private:
  static constexpr int kCalls = 50;
  static constexpr std::array kQuickCalls = {1, 2, 5};
  static constexpr auto kQuickTime = 16s;

  /// How many calls of each kind the programs came to.
  [[nodiscard]] std::string reachedOfEach() const {
    std::string text;
    for (const auto& [call, count] : reached_)
      text += (text.empty() ? "" : ", ") + std::to_string(count) + " x " + call;
    return text;
  }

  /// With these settings nothing counts as work: no threshold is ever reached, and requests of
  /// other programs do not count.
  static constexpr const char* kText =
      "# mine\ncpuThresholdPercent = 1e9\ndiskThresholdKBps = 1e9\nnetThresholdKBps = 1e9\n"
      "honorAppAssertions = false\nignoredApps = ['a'] # one\n";

  /// Lets the call fail in the report, which writes a setting, and in the program, which reads the
  /// settings, holds and shows its item.
  void tryOne(const FailingCall& failure, int number, Effort effort) {
    what_ = std::string(failure.call) + " number " + std::to_string(number);
    const testing::ScopedEnvironment call("STAYLIT_FAILING_CALL", failure.call);
    const testing::ScopedEnvironment count("STAYLIT_FAILING_NUMBER", std::to_string(number));
    const testing::ScopedEnvironment error("STAYLIT_FAILING_ERROR", std::to_string(failure.error));
    const testing::ScopedEnvironment mark("STAYLIT_FAILING_MARK", markFile());
    std::filesystem::remove(markFile());
    letRun({"--diagnose"}, effort.quick ? 300ms : 1500ms, SIGTERM);
    windowsAskedFor_ = std::string_view(failure.call) == "fork" ? number : 0;
    letRun({}, effort.quick ? 500ms : 4500ms, 0);
    windowsAskedFor_ = 0;
    if (std::filesystem::exists(markFile())) ++reached_[failure.call];
    ++outcome_.runs;
  }

  [[nodiscard]] std::string markFile() const { return folder.path() / "mark"; }

  /// Runs the program for `time` and terminates it. `signal` is what must end it then; 0 when it
  /// must end in order.
  void letRun(const std::vector<std::string>& arguments, std::chrono::milliseconds time,
              int signal) {
    writeSettings(kText);
    {
      testing::ChildProgram program = startWithShim(arguments);
      askForWindows();
      std::this_thread::sleep_for(time);
      if (const std::string reason = holdReason();
          !reason.empty() && reason != "waiting for work to resume") {
        find("it holds because \"" + reason + "\"");
      }
      ::kill(program.pid(), SIGTERM);
      if (!endsAs(program, signal)) find("it ended with " + ending_ + " " + output("err"));
    }
    if (!eventually([this] { return holdReason().empty(); }, 5s)) find("its hold stayed");
    checkSettings();
  }

  /// Asks for windows on a display that does not exist. For each, the program starts a process that
  /// tries the display.
  void askForWindows() {
    if (windowsAskedFor_ > 0) eventually([this] { return !holdReason().empty(); }, 20s);
    const testing::ScopedEnvironment display("DISPLAY", ":4999");
    for (int number = 0; number < windowsAskedFor_; ++number) {
      wait(start({"--settings"}));
      std::this_thread::sleep_for(100ms);
    }
  }

  testing::ChildProgram startWithShim(const std::vector<std::string>& arguments) {
    const testing::ScopedEnvironment shim("LD_PRELOAD", FAILING_CALLS_LIBRARY);
    const testing::ScopedEnvironment display("DISPLAY", ":4999");
    return start(arguments);
  }

  bool endsAs(const testing::ChildProgram& program, int signal) {
    siginfo_t info{};
    const auto hasEnded = [&] {
      return ::waitid(P_PID, static_cast<id_t>(program.pid()), &info,
                      WEXITED | WNOHANG | WNOWAIT) == 0 &&
             info.si_pid != 0;
    };
    if (!eventually(hasEnded, 20s)) {
      ending_ = "nothing: it did not end within 20 s";
      return false;
    }
    const bool hasExited = info.si_code == CLD_EXITED;
    ending_ = (hasExited ? "status " : "signal ") + std::to_string(info.si_status);
    return hasExited ? info.si_status == 0 : info.si_status == signal;
  }

  void checkSettings() {
    const std::string text = settings();
    const platform::SettingsValues values = platform::parseSettings(text);
    if (!values.damage.empty() || !text.starts_with(kText)) find("the settings became: " + text);
  }

  void find(const std::string& finding) { outcome_.findings.push_back(what_ + ": " + finding); }

  Outcome outcome_;
  std::string what_;
  std::string ending_;
  int windowsAskedFor_ = 0;
  std::map<std::string, int> reached_;
};

}  // namespace

Outcome failingCalls(Effort effort) {
  if (const auto obstacle = testing::OwnMachine::obstacle()) return notPossible(*obstacle);
  return FailingCalls().run(effort);
}

}  // namespace staylit::campaign
