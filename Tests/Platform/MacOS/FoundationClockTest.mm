#include "Platform/MacOS/Time/FoundationClock.h"

#include <gtest/gtest.h>
#include <time.h>

#include <chrono>

namespace platform {
namespace {

using std::chrono::steady_clock;

TEST(FoundationClock, TellsTheTimeOnTheWall) {
  const auto before = std::chrono::system_clock::now();
  const auto now = FoundationClock().wallTime();
  const auto after = std::chrono::system_clock::now();
  // The system's date has a coarser last digit.
  EXPECT_LE(before - std::chrono::microseconds(10), now);
  EXPECT_LE(now, after + std::chrono::microseconds(10));
}

/// By the kernel's clock of that kind, which counts in nanoseconds.
tidewell::Seconds secondsOf(clockid_t kind) {
  return std::chrono::nanoseconds(clock_gettime_nsec_np(kind));
}

TEST(FoundationClock, CountsTheTimeThatTheMacSleeps) {
  FoundationClock clock;
  const tidewell::Seconds awake = secondsOf(CLOCK_UPTIME_RAW);
  const tidewell::Seconds all = secondsOf(CLOCK_MONOTONIC_RAW);
  const tidewell::Seconds counted = clock.now().time_since_epoch();
  EXPECT_GE(counted.count(), awake.count() - 0.001);
  EXPECT_NEAR(counted.count(), all.count(), 1);
}

TEST(FoundationClock, SleepsAtLeastAsLongAsItIsTold) {
  FoundationClock clock;
  const tidewell::Moment before = clock.now();
  clock.sleepFor(tidewell::Seconds(0.05));
  EXPECT_GE(tidewell::Seconds(clock.now() - before).count(), 0.05);
}

TEST(FoundationClock, DoesNotSleepForNoTime) {
  const auto begin = steady_clock::now();
  FoundationClock().sleepFor(tidewell::Seconds(0));
  FoundationClock().sleepFor(tidewell::Seconds(-1e300));
  EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(5));
}

}  // namespace
}  // namespace platform
