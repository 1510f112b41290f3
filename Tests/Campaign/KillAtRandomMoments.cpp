#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Tests/Campaign/Campaigns.h"
#include "Tests/EndToEnd/OwnMachine.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using std::chrono::microseconds;
using testing::ChildProgram;
using Steady = std::chrono::steady_clock;

constexpr auto kMostUntilForgotten = 100ms;

class Kills {
 public:
  Outcome run(Effort effort) {
    // The times are so short that holding, waiting and releasing all happen.
    machine_.writeSettings("graceSeconds = 30\nsustainSeconds = 1\ncpuThresholdPercent = 1e9\n");
    for (int count = effort.quick ? 20 : 500; count > 0; --count)
      whileItStarts(count % 2 == 0 ? 200ms : 20ms);
    for (int count = effort.quick ? 10 : 300; count > 0; --count)
      whileItLetsGoOrHoldsAgain();
    for (int count = effort.quick ? 2 : 200; count > 0; --count)
      whileItRenames();
    outcome_.measured = std::to_string(withLocks_) + " held when they were killed, " +
                        std::to_string(withTwo_) + " of them two holds for a moment; " +
                        "longest until logind knew " + std::to_string(longest_.count() / 1000) +
                        " ms";
    return outcome_;
  }

  [[nodiscard]] bool begin() { return machine_.begin(); }

 private:
  microseconds randomTime(microseconds longest) {
    const double share = std::uniform_real_distribution<>(0, 1)(random_);
    return microseconds(static_cast<std::int64_t>(static_cast<double>(longest.count()) * share));
  }
  /// Counts one lock when logind does not answer.
  std::size_t locksOf(pid_t pid) { return machine_.locksOf(pid).value_or(1); }
  bool isHeld() { return !machine_.holdReason().empty(); }

  void whileItStarts(microseconds longest) {
    ChildProgram staylit = machine_.start();
    std::this_thread::sleep_for(randomTime(longest));
    kill(staylit, "while it started");
  }

  void whileItLetsGoOrHoldsAgain() {
    ChildProgram staylit = machine_.start();
    if (!testing::OwnMachine::eventually([this] { return isHeld(); }, 20s)) return noHold();
    std::vector<ChildProgram> second;
    for (int toggles = std::uniform_int_distribution(1, 3)(random_); toggles > 0; --toggles) {
      second.push_back(machine_.start({"--toggle-pause"}));
      std::this_thread::sleep_for(randomTime(60ms));
    }
    kill(staylit, "while it let go or held again");
  }

  void whileItRenames() {
    ChildProgram staylit = machine_.start();
    if (!testing::OwnMachine::eventually([this] { return isHeld(); }, 20s)) return noHold();
    // Another program's lock gives the hold another reason on one of the next ticks.
    const platform::Descriptor other = machine_.inhibit("idle", "somebody", "the campaign");
    const std::size_t before = locksOf(staylit.pid());
    const std::string reason = machine_.holdReason();
    const auto end = Steady::now() + 20s;
    std::size_t now = before;
    while (now == before && machine_.holdReason() == reason && Steady::now() < end)
      now = locksOf(staylit.pid());
    withTwo_ += now > before ? 1 : 0;
    if (Steady::now() >= end) outcome_.findings.emplace_back("the hold was not renamed in 20 s");
    std::this_thread::sleep_for(randomTime(500us));
    kill(staylit, "while it renamed its hold");
  }

  void noHold() { outcome_.findings.emplace_back("no hold 20 s after the start"); }

  void kill(ChildProgram& staylit, const std::string& when) {
    ++outcome_.runs;
    const pid_t pid = staylit.pid();
    withLocks_ += machine_.locksOf(pid).value_or(0) > 0 ? 1 : 0;
    staylit.kill();
    const auto killed = Steady::now();
    // An answer of logind may be older than the limit, but not the third one after it.
    int lateAnswers = 0;
    while (locksOf(pid) > 0 && lateAnswers < 3) {
      if (Steady::now() - killed > kMostUntilForgotten) ++lateAnswers;
    }
    longest_ = std::max(longest_, std::chrono::duration_cast<microseconds>(Steady::now() - killed));
    if (lateAnswers < 3) return;
    outcome_.findings.push_back("a lock was left 100 ms after the program was killed " + when);
  }

  testing::OwnMachine machine_;
  Outcome outcome_;
  std::mt19937 random_{1};
  microseconds longest_{0};
  int withLocks_ = 0;
  int withTwo_ = 0;
};

}  // namespace

Outcome killAtRandomMoments(Effort effort) {
  if (const auto obstacle = testing::OwnMachine::obstacle()) return notPossible(*obstacle);
  Kills kills;
  if (!kills.begin()) return notPossible("logind does not answer");
  return kills.run(effort);
}

}  // namespace staylit::campaign
