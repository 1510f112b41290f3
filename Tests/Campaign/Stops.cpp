#include <sys/types.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Tests/Campaign/Campaigns.h"
#include "Tests/EndToEnd/OwnMachine.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using testing::ChildProgram;
using testing::OwnMachine;
using Steady = std::chrono::steady_clock;

enum class Stopped { staylit, logind, systemBus, sessionBus };

/// The length of two ticks with their tolerance, and of one call.
constexpr auto kTwoTicks = 6s;

/// Stops Staylit, or something that it needs, for a while. Changes something meanwhile, and
/// measures how long it takes afterwards until everything is right.
class Stops {
 public:
  explicit Stops(Effort effort) : effort_(effort) {}

  bool begin() { return machine_.begin(); }

  Outcome run(Stopped stopped) {
    machine_.writeSettings("graceSeconds = 600\ncpuThresholdPercent = 1e9\n");
    const int count = effort_.quick ? 1 : 50;
    for (int number = 0; number < count; ++number)
      stop(stopped, number);
    outcome_.measured = "longest until all was right " + std::to_string(longest_.count()) +
                        " ms after the continuation";
    return outcome_;
  }

 private:
  void stop(Stopped stopped, int number) {
    switch (stopped) {
      case Stopped::staylit:
        return stopStaylit(number);
      case Stopped::logind:
        return stopService("logind", *machine_.logind, number);
      case Stopped::systemBus:
        return stopService("the system bus", *machine_.systemDaemon, number);
      case Stopped::sessionBus:
        return stopSessionBus();
    }
  }

  /// Between 1 s and 300 s; short times are more frequent.
  std::chrono::milliseconds randomTime() {
    if (effort_.quick) return 1500ms;
    const double power = std::uniform_real_distribution<>(0, std::log(300.0))(random_);
    return std::chrono::milliseconds(static_cast<std::int64_t>(1000 * std::exp(power)));
  }

  ChildProgram startHolding() {
    // The program before has been killed, and logind may not have noticed yet.
    expect("before the start", 20s, [this] { return countOfLocks() == 0; });
    ChildProgram staylit = machine_.start();
    expect("at the start", 20s, [this] { return countOfLocks() == 1; });
    return staylit;
  }

  /// While Staylit is stopped, another program begins or ceases to ask for staying awake.
  void stopStaylit(int number) {
    const ChildProgram staylit = startHolding();
    std::optional<ChildProgram> other;
    const auto asks = [&other] {
      other.emplace(std::vector<std::string>{"systemd-inhibit", "--what=idle", "--why=campaign",
                                             "sleep", "1000"});
    };
    const bool begins = number % 2 == 0;
    if (!begins) {
      asks();
      expect("another program's lock", 20s, [this] { return countOfLocks() == 1 && isForWork(); });
    }
    ::kill(staylit.pid(), SIGSTOP);
    begins ? asks() : other.reset();
    std::this_thread::sleep_for(randomTime());
    ::kill(staylit.pid(), SIGCONT);
    rightSoon("Staylit was stopped", [this, begins] {
      // The reason may follow a little later than the lock, because holds are not renamed often.
      return countOfLocks() == 1 && isForWork() == begins;
    });
  }

  /// While the service is stopped, Staylit is paused or resumed.
  template <class Service>
  void stopService(const std::string& name, Service& service, int number) {
    const ChildProgram staylit = startHolding();
    const bool isPausedAtLast = number % 2 == 0;
    if (!isPausedAtLast) {
      toggle();
      expect("paused", 20s, [this] { return countOfLocks() == 0; });
    }
    service.freeze();
    toggle();
    std::this_thread::sleep_for(randomTime());
    service.thaw();
    const int wanted = isPausedAtLast ? 0 : 1;
    rightSoon(name + " was stopped", [this, wanted] { return countOfLocks() == wanted; });
  }

  void stopSessionBus() {
    const ChildProgram staylit = startHolding();
    machine_.sessionDaemon->freeze();
    std::this_thread::sleep_for(randomTime());
    machine_.sessionDaemon->thaw();
    rightSoon("the session bus was stopped", [this] { return countOfLocks() == 1; });
    toggle();
    expect("paused after the session bus was stopped", 20s, [this] { return countOfLocks() == 0; });
  }

  void toggle() { OwnMachine::wait(machine_.start({"--toggle-pause"})); }

  bool isForWork() {
    const std::string reason = machine_.holdReason();
    return !reason.empty() && reason != kWaiting;
  }

  int countOfLocks() {
    const auto all = machine_.inhibitors();
    if (!all) return -1;
    return static_cast<int>(std::ranges::count_if(*all, [](const std::string& lock) {
      return lock.starts_with("idle|Staylit|") && lock.ends_with("|block");
    }));
  }

  void rightSoon(const std::string& what, const std::function<bool()>& isRight) {
    ++outcome_.runs;
    const auto begin = Steady::now();
    expect(what, kTwoTicks, isRight);
    longest_ = std::max(
        longest_, std::chrono::duration_cast<std::chrono::milliseconds>(Steady::now() - begin));
  }
  void expect(const std::string& what, std::chrono::seconds limit,
              const std::function<bool()>& isRight) {
    if (OwnMachine::eventually(isRight, limit)) return;
    outcome_.findings.push_back(what + ": not right after " + std::to_string(limit.count()) +
                                " s, with " + std::to_string(countOfLocks()) + " locks");
  }

  static constexpr const char* kWaiting = "waiting for work to resume";

  Effort effort_;
  OwnMachine machine_;
  Outcome outcome_;
  std::mt19937 random_{1};
  std::chrono::milliseconds longest_{0};
};

Outcome stops(Effort effort, Stopped stopped) {
  if (const auto obstacle = OwnMachine::obstacle()) return notPossible(*obstacle);
  Stops campaign(effort);
  if (!campaign.begin()) return notPossible("logind does not answer");
  return campaign.run(stopped);
}

}  // namespace

Outcome stopsOfStaylit(Effort effort) {
  return stops(effort, Stopped::staylit);
}
Outcome stopsOfLogind(Effort effort) {
  return stops(effort, Stopped::logind);
}
Outcome stopsOfTheSystemBus(Effort effort) {
  return stops(effort, Stopped::systemBus);
}
Outcome stopsOfTheSessionBus(Effort effort) {
  return stops(effort, Stopped::sessionBus);
}

}  // namespace staylit::campaign
