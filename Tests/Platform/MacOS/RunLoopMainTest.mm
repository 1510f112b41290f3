#include "Platform/MacOS/Loop/RunLoopMain.h"

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Platform/MacOS/Loop/ModalWork.h"

namespace platform {
namespace {

/// Lets the main run loop run in that mode until the condition holds, for ten seconds at most.
template <typename Condition>
bool loopsUntil(Condition condition, NSRunLoopMode mode = NSDefaultRunLoopMode) {
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
  EXPECT_TRUE(loopsUntil([&] { return log == "ab"; }));
}

TEST(RunLoopMain, RunsWhatIsPendingAtOnceAndOnlyOnce) {
  RunLoopMain loop;
  std::string log;
  loop.async([&] { log += "a"; });
  loop.runPending();
  EXPECT_EQ(log, "a");
  loop.async([&] { log += "b"; });
  EXPECT_TRUE(loopsUntil([&] { return log == "ab"; }));
}

TEST(RunLoopMain, ForgetsWhatIsPostedWhenItGoes) {
  std::string log;
  auto loop = std::make_unique<RunLoopMain>();
  loop->async([&] { log += "a"; });
  loop.reset();
  RunLoopMain other;
  other.async([&] { log += "b"; });
  EXPECT_TRUE(loopsUntil([&] { return !log.empty(); }));
  EXPECT_EQ(log, "b");
}

TEST(RunLoopMain, ATimerFiresAgainAndAgainAndMayEndItself) {
  RunLoopMain loop;
  int fired = 0;
  std::unique_ptr<tidewell::RepeatingTimer> timer;
  timer = loop.scheduleRepeating(tidewell::Seconds(0.01), [&] {
    if (++fired == 3) timer.reset();
  });
  EXPECT_TRUE(loopsUntil([&] { return fired == 3 && !timer; }));
}

TEST(RunLoopMain, ATimerFiresWhileAMenuIsOpen) {
  [NSApplication sharedApplication];  // It makes the mode of an open menu one of the common modes.
  RunLoopMain loop;
  int fired = 0;
  const auto timer = loop.scheduleRepeating(tidewell::Seconds(0.01), [&] { ++fired; });
  EXPECT_TRUE(loopsUntil([&] { return fired > 0; }, NSEventTrackingRunLoopMode));
}

TEST(RunLoopMain, RunsWhatIsPostedWhileAModalWindowIsShown) {
  RunLoopMain loop;
  bool wasRunMeanwhile = false;
  bool isClosed = false;
  performModal([&] {
    bool wasRun = false;
    loop.async([&] { wasRun = true; });
    wasRunMeanwhile = loopsUntil([&] { return wasRun; });
    isClosed = true;
  });
  EXPECT_FALSE(isClosed);
  EXPECT_TRUE(loopsUntil([&] { return isClosed; }));
  EXPECT_TRUE(wasRunMeanwhile);
}

TEST(RunLoopMain, ShowsNoModalWindowWhileAMenuIsOpen) {
  [NSApplication sharedApplication];
  bool isShown = false;
  performModal([&] { isShown = true; });
  [NSRunLoop.mainRunLoop runMode:NSEventTrackingRunLoopMode
                      beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
  EXPECT_FALSE(isShown);
  EXPECT_TRUE(loopsUntil([&] { return isShown; }));
}

}  // namespace
}  // namespace platform
