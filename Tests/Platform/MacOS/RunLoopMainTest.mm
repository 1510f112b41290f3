#include "Platform/MacOS/Loop/RunLoopMain.h"

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace platform {
namespace {

/// Lets the main run loop run in that mode until the condition holds, for ten seconds at most.
template <typename Condition>
bool eventually(Condition condition, NSRunLoopMode mode = NSDefaultRunLoopMode) {
  NSDate* const end = [NSDate dateWithTimeIntervalSinceNow:10];
  while (!condition() && end.timeIntervalSinceNow > 0) {
    [NSRunLoop.mainRunLoop runMode:mode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
  }
  return condition();
}

TEST(RunLoopMain, RunsWhatIsPostedInItsOrder) {
  RunLoopMain loop;
  std::string log;
  loop.async([&] { log += "a"; });
  loop.async([&] { log += "b"; });
  EXPECT_EQ(log, "");
  EXPECT_TRUE(eventually([&] { return log == "ab"; }));
}

TEST(RunLoopMain, RunsWhatIsPendingAtOnceAndOnlyOnce) {
  RunLoopMain loop;
  std::string log;
  loop.async([&] { log += "a"; });
  loop.runPending();
  EXPECT_EQ(log, "a");
  loop.async([&] { log += "b"; });
  EXPECT_TRUE(eventually([&] { return log == "ab"; }));
}

TEST(RunLoopMain, ForgetsWhatIsPostedWhenItGoes) {
  std::string log;
  auto loop = std::make_unique<RunLoopMain>();
  loop->async([&] { log += "a"; });
  loop.reset();
  RunLoopMain other;
  other.async([&] { log += "b"; });
  EXPECT_TRUE(eventually([&] { return !log.empty(); }));
  EXPECT_EQ(log, "b");
}

TEST(RunLoopMain, ATimerFiresAgainAndAgainAndMayEndItself) {
  RunLoopMain loop;
  int fired = 0;
  std::unique_ptr<tidewell::RepeatingTimer> timer;
  timer = loop.scheduleRepeating(tidewell::Seconds(0.01), [&] {
    if (++fired == 3) timer.reset();
  });
  EXPECT_TRUE(eventually([&] { return fired == 3 && !timer; }));
}

TEST(RunLoopMain, ATimerFiresWhileAMenuIsOpen) {
  RunLoopMain loop;
  int fired = 0;
  const auto timer = loop.scheduleRepeating(tidewell::Seconds(0.01), [&] { ++fired; });
  EXPECT_TRUE(eventually([&] { return fired > 0; }, NSEventTrackingRunLoopMode));
}

}  // namespace
}  // namespace platform
