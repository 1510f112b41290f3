#include "Platform/Linux/Loop/EventLoop.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <string>

#include "Tests/Platform/Support/RunUntil.h"

namespace platform {
namespace {

using testing::runUntil;
using tidewell::Seconds;

TEST(EventLoop, RunsPostedWorkInTheOrderOfTheCallsAndNeverBeforeReturning) {
  EventLoop loop;
  std::string log;
  loop.async([&] { log += "a"; });
  loop.async([&] { log += "b"; });
  loop.async([&] {
    log += "c";
    loop.stop();
  });
  EXPECT_EQ(log, "");
  loop.run();
  EXPECT_EQ(log, "abc");
}

TEST(EventLoop, RunsWorkThatWorkPostsAfterTheWorkPostedBefore) {
  EventLoop loop;
  std::string log;
  loop.async([&] {
    log += "a";
    loop.async([&] {
      log += "c";
      loop.stop();
    });
    EXPECT_EQ(log, "a");
  });
  loop.async([&] { log += "b"; });
  loop.run();
  EXPECT_EQ(log, "abc");
}

TEST(EventLoop, ReturnsTheStatusThatItWasStoppedWithAndCanRunAgain) {
  EventLoop loop;
  loop.async([&] { loop.stop(3); });
  EXPECT_EQ(loop.run(), 3);
  loop.async([&] { loop.stop(4); });
  EXPECT_EQ(loop.run(), 4);
}

TEST(EventLoop, ReturnsAtOnceWhenItWasStoppedBefore) {
  EventLoop loop;
  loop.stop(5);
  EXPECT_EQ(loop.run(), 5);
}

TEST(EventLoop, FiresARepeatingTimerAgainAndAgain) {
  EventLoop loop;
  int firings = 0;
  const auto timer = loop.scheduleRepeating(Seconds(0.001), [&] {
    if (++firings == 5) loop.stop();
  });
  EXPECT_EQ(firings, 0);
  loop.run();
  EXPECT_EQ(firings, 5);
}

TEST(EventLoop, FiresNoTimerThatWasInvalidated) {
  EventLoop loop;
  int firings = 0;
  const auto invalidated = loop.scheduleRepeating(Seconds(0.001), [&] { ++firings; });
  const auto other = loop.scheduleRepeating(Seconds(0.02), [&] { loop.stop(); });
  invalidated->invalidate();
  loop.run();
  EXPECT_EQ(firings, 0);
}

TEST(EventLoop, LetsATimerInvalidateItselfWhileItFires) {
  EventLoop loop;
  int firings = 0;
  std::unique_ptr<tidewell::RepeatingTimer> timer;
  timer = loop.scheduleRepeating(Seconds(0.001), [&] {
    ++firings;
    timer->invalidate();
  });
  const auto other = loop.scheduleRepeating(Seconds(0.02), [&] { loop.stop(); });
  loop.run();
  EXPECT_EQ(firings, 1);
}

TEST(EventLoop, LetsATimerBeDestroyedWhileItFires) {
  EventLoop loop;
  std::string log;
  std::unique_ptr<tidewell::RepeatingTimer> timer;
  timer = loop.scheduleRepeating(Seconds(0.001), [&, kept = std::string("still here")] {
    timer.reset();
    log += kept;
  });
  const auto other = loop.scheduleRepeating(Seconds(0.02), [&] { loop.stop(); });
  loop.run();
  EXPECT_EQ(log, "still here");
}

TEST(EventLoop, AcceptsAnyTolerance) {
  EventLoop loop;
  int firings = 0;
  const auto timer = loop.scheduleRepeating(Seconds(0.001), [&] { ++firings; });
  timer->setTolerance(Seconds(0));
  EXPECT_TRUE(runUntil(loop, [&] { return firings >= 1; }));
  timer->setTolerance(Seconds(0.5));
  EXPECT_TRUE(runUntil(loop, [&] { return firings >= 2; }));
  timer->setTolerance(Seconds(-1));
  EXPECT_TRUE(runUntil(loop, [&] { return firings >= 3; }));
}

TEST(EventLoop, RunsItsActionOnEachTerminationSignal) {
  // When the tests run in the background, some signals may be ignored.
  for (const int signal : {SIGTERM, SIGINT, SIGHUP})
    std::signal(signal, SIG_DFL);
  EventLoop loop;
  int calls = 0;
  loop.watchTerminationSignals([&] { ++calls; });
  ::raise(SIGTERM);
  EXPECT_TRUE(runUntil(loop, [&] { return calls == 1; }));
  ::raise(SIGINT);
  EXPECT_TRUE(runUntil(loop, [&] { return calls == 2; }));
  ::raise(SIGHUP);
  EXPECT_TRUE(runUntil(loop, [&] { return calls == 3; }));
}

TEST(EventLoop, RestoresTheSignalMaskWhenItIsDestroyed) {
  sigset_t before;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  {
    EventLoop loop;
    loop.watchTerminationSignals([] {});
  }
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  EXPECT_EQ(sigismember(&after, SIGTERM), sigismember(&before, SIGTERM));
  EXPECT_EQ(sigismember(&after, SIGINT), sigismember(&before, SIGINT));
  EXPECT_EQ(sigismember(&after, SIGHUP), sigismember(&before, SIGHUP));
}

bool isReadable(int descriptor) {
  pollfd poll{descriptor, POLLIN, 0};
  return ::poll(&poll, 1, 5000) == 1;
}

TEST(EventLoopInAForeignLoop, WakesItForWorkThatIsPostedBetweenPumps) {
  EventLoop loop;
  loop.pump();
  bool ran = false;
  loop.async([&] { ran = true; });
  ASSERT_TRUE(isReadable(loop.descriptor()));
  loop.pump();
  EXPECT_TRUE(ran);
}

TEST(EventLoopInAForeignLoop, WakesItForATimerThatIsSetBetweenPumps) {
  EventLoop loop;
  loop.pump();
  bool fired = false;
  const auto timer = loop.scheduleRepeating(Seconds(0.01), [&] { fired = true; });
  for (int turn = 0; turn < 100 && !fired; ++turn) {
    ASSERT_TRUE(isReadable(loop.descriptor()));
    loop.pump();
  }
  EXPECT_TRUE(fired);
}

TEST(EventLoopInAForeignLoop, IgnoresAPumpFromWithinAnAction) {
  EventLoop loop;
  std::string log;
  loop.async([&] {
    loop.async([&] { log += "b"; });
    loop.pump();
    log += "a";
  });
  ASSERT_TRUE(runUntil(loop, [&] { return log.size() == 2; }));
  EXPECT_EQ(log, "ab");
}

TEST(EventLoopInAForeignLoop, RunsByItselfAgainAfterwards) {
  EventLoop loop;
  loop.pump();
  bool ran = false;
  loop.async([&] {
    ran = true;
    loop.stop();
  });
  EXPECT_EQ(loop.run(), 0);
  EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace platform
