#include "Platform/Linux/System/SystemClock.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>

#include <limits>

namespace platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

TEST(SystemClock, TellsTheTimeOfTheMachine) {
  const auto before = std::chrono::system_clock::now();
  const tidewell::Date now = SystemClock().now();
  const auto after = std::chrono::system_clock::now();
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
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

TEST(SystemClock, DoesNotSleepForNoTime) {
  SystemClock clock;
  const auto begin = std::chrono::steady_clock::now();
  clock.sleepFor(tidewell::Seconds(0));
  clock.sleepFor(tidewell::Seconds(-1e300));
  clock.sleepFor(tidewell::Seconds(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

}  // namespace
}  // namespace platform
