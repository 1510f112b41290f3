#include "Platform/Linux/Time/SystemClock.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/time.h>

#include <fstream>
#include <limits>
#include <string>

#include "Tests/Platform/ChildProcess.h"

namespace platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

TEST(SystemClock, TellsTheWallTime) {
  const auto before = std::chrono::system_clock::now();
  const tidewell::WallTime now = SystemClock().wallTime();
  const auto after = std::chrono::system_clock::now();
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

/// Makes the clocks tell that the machine has slept for `asleep` so far. False when that may not be
/// simulated. Call it in a process of its own.
bool enterMachineThatSlept(std::chrono::seconds asleep) {
  if (::unshare(CLONE_NEWTIME) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWTIME) != 0) return false;
  std::ofstream offsets("/proc/self/timens_offsets");
  offsets << "boottime " << asleep.count() << " 0" << std::flush;
  return offsets.good();
}

TEST(SystemClock, CountsTheTimeThatTheMachineSleeps) {
  const tidewell::Seconds before = SystemClock().timeAsleep();
  const std::string seconds = inChild([]() -> std::string {
    if (!enterMachineThatSlept(std::chrono::seconds(86'400))) return "not allowed";
    // The clocks change only for processes that are started now.
    return inChild(
        [] { return std::to_string(tidewell::Seconds(SystemClock().timeAsleep()).count()); });
  });
  if (seconds == "not allowed") GTEST_SKIP() << "no time namespaces here";
  EXPECT_NEAR(std::stod(seconds), before.count() + 86'400, 60);
}

TEST(SystemClock, SleepsAtLeastAsLongAsItIsTold) {
  const auto start = steady_clock::now();
  SystemClock().sleepFor(tidewell::Seconds(0.02));
  EXPECT_GE(steady_clock::now() - start, milliseconds(20));
}

TEST(SystemClock, SleepsOnAfterASignal) {
  struct sigaction action {};
  struct sigaction former {};
  action.sa_handler = [](int) {};
  sigaction(SIGALRM, &action, &former);
  const itimerval often{{0, 5000}, {0, 5000}};
  setitimer(ITIMER_REAL, &often, nullptr);
  const auto start = steady_clock::now();
  SystemClock().sleepFor(tidewell::Seconds(0.05));
  const auto slept = steady_clock::now() - start;
  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &former, nullptr);
  EXPECT_GE(slept, milliseconds(50));
}

TEST(SystemClock, DoesNotSleepForADurationThatIsNotPositive) {
  SystemClock clock;
  const auto begin = std::chrono::steady_clock::now();
  clock.sleepFor(tidewell::Seconds(0));
  clock.sleepFor(tidewell::Seconds(-1e300));
  clock.sleepFor(tidewell::Seconds(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

}  // namespace
}  // namespace platform
