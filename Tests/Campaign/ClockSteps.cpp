#include "Tests/Campaign/Campaigns.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "Tests/EndToEnd/OwnMachine.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using staylit::testing::ChildProgram;
using staylit::testing::OwnMachine;
using staylit::testing::ScopedEnvironment;
using Steady = std::chrono::steady_clock;

constexpr std::string_view kWorking = "Aider is working";
constexpr std::string_view kWaiting = "waiting for work to resume";

/// A machine with one program on it, whose wall clock is set by `step` seconds, once in each state.
class SteppedMachine : OwnMachine {
 public:
  SteppedMachine(std::int64_t step, Outcome& outcome) : step_(step), outcome_(outcome) {
    writeClock();
    writeSettings(
        "graceSeconds = 30\nsustainSeconds = 5\nhonorAppAssertions = false\n"
        "diskThresholdKBps = 1e9\nnetThresholdKBps = 1e9\ncpuThresholdPercent = 1e9\n");
  }

  bool start() {
    if (!begin()) return false;
    const std::string clock = (folder.path() / "clock").string();
    const ScopedEnvironment file("STAYLIT_STEPPED_CLOCK", clock);
    const ScopedEnvironment preload("LD_PRELOAD", STEPPED_CLOCK);
    program_ = OwnMachine::start();
    return become(kWaiting);
  }

  void stepIdle() {
    if (!become("")) return fail("idle", "it did not let go after its start");
    step();
    if (!staysFor(6s, "")) fail("idle", "it held");
  }
  void stepBeforeWorkIsSustained() {
    worker_ = workAs("aider", {"cpu"});
    const auto began = Steady::now();
    std::this_thread::sleep_for(3s);
    step();
    // Two ticks find the work, and the work must last for 5 s after the second one.
    while (Steady::now() - began < 5s) {
      if (holdReason() == kWorking && Steady::now() - began < 5s) {
        return fail("not yet sustained", "it held too early");
      }
      std::this_thread::sleep_for(100ms);
    }
    if (!become(kWorking)) fail("not yet sustained", "it did not hold within a minute");
  }
  void stepWhileWorking() {
    if (!become(kWorking)) return fail("working", "it did not hold");
    step();
    if (!staysFor(8s, kWorking)) fail("working", "it let go");
  }
  void stepDuringGrace() {
    worker_.kill();
    if (!become(kWaiting)) return fail("grace", "there was none");
    const auto noticed = Steady::now();
    std::this_thread::sleep_for(5s);
    step();
    if (!become("")) return fail("grace", "it still held after a minute");
    const auto released = Steady::now();
    if (released - noticed < 28s) fail("grace", "it let go too early");
    if (released - noticed > 30s + 4s) fail("grace", "it let go too late");
  }
  void stepWhilePaused() {
    togglePause();
    step();
    if (!staysFor(4s, "")) fail("paused", "it held");
    togglePause();
    if (!become(kWaiting)) fail("paused", "it did not go on");
  }

 private:
  void writeClock() {
    std::ofstream(folder.path() / "clock", std::ios::binary)
        .write(reinterpret_cast<const char*>(&offset_), sizeof offset_);
  }
  void step() {
    ++outcome_.runs;
    offset_ += step_;
    // The file is written in place, because the program has mapped it.
    std::fstream file(folder.path() / "clock", std::ios::binary | std::ios::in | std::ios::out);
    file.write(reinterpret_cast<const char*>(&offset_), sizeof offset_);
  }
  void fail(const std::string& state, const std::string& what) {
    outcome_.findings.push_back("Set by " + std::to_string(step_) + " s while " + state + ": " +
                                what + " (held: '" + holdReason() + "').");
  }
  void togglePause() { wait(ChildProgram({STAYLIT_PROGRAM, "--toggle-pause"})); }
  bool become(std::string_view reason) {
    return eventually([&] { return holdReason() == reason; }, 60s);
  }
  bool staysFor(std::chrono::seconds duration, std::string_view reason) {
    const auto end = Steady::now() + duration;
    while (Steady::now() < end) {
      if (holdReason() != reason) return false;
      std::this_thread::sleep_for(100ms);
    }
    return true;
  }

  std::int64_t step_;
  std::int64_t offset_ = 0;
  Outcome& outcome_;
  ChildProgram program_;
  ChildProgram worker_;
};

/// Whether a program's wall clock can be set on this machine.
bool canBeStepped() {
  const std::string set = std::string(
                              "f=$(mktemp) && printf '\\001\\000\\000\\000\\001\\000\\000\\000' "
                              ">$f && a=$(date +%s) && b=$(STAYLIT_STEPPED_CLOCK=$f LD_PRELOAD=") +
                          STEPPED_CLOCK + " date +%s) && rm $f && test $((b - a)) -gt 4294967000";
  return std::system(set.c_str()) == 0;
}

}  // namespace

Outcome clockSteps(Effort effort) {
  if (const auto obstacle = OwnMachine::obstacle()) return notPossible(*obstacle);
  if (!canBeStepped()) return notPossible("no clock can be put before a program's own here");
  const std::vector<std::int64_t> steps =
      effort.quick ? std::vector<std::int64_t>{-3600}
                   : std::vector<std::int64_t>{1,     -1,     60,      -60,         3600,
                                               -3600, 86'400, -86'400, 315'532'800, -315'532'800};
  Outcome outcome;
  for (const std::int64_t step : steps) {
    SteppedMachine machine(step, outcome);
    if (!machine.start()) {
      outcome.findings.push_back("The program did not start.");
      continue;
    }
    if (!effort.quick) machine.stepIdle();
    machine.stepBeforeWorkIsSustained();
    machine.stepWhileWorking();
    if (effort.quick) continue;
    machine.stepDuringGrace();
    machine.stepWhilePaused();
  }
  outcome.measured = "by 1 s, 1 min, 1 h, 1 day and 10 years, forward and back";
  if (effort.quick) outcome.measured = "by 1 h back";
  return outcome;
}

}  // namespace staylit::campaign
