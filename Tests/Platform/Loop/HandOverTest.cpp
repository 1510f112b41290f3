#include <gtest/gtest.h>

#include "Platform/Linux/Loop/EventLoop.h"

namespace platform {
namespace {

TEST(EventLoopHandOver, MakesRunReturnAfterTheActionThatAskedForIt) {
  EventLoop loop;
  bool didMore = false;
  loop.async([&] {
    loop.handOver();
    loop.async([&] { didMore = true; });
  });
  EXPECT_EQ(loop.run(), 0);
  EXPECT_FALSE(didMore);
  EXPECT_FALSE(loop.isStopping());
  loop.pump();
  loop.pump();
  EXPECT_TRUE(didMore);
}

TEST(EventLoopHandOver, LeavesAStopForTheLoopThatTakesOver) {
  EventLoop loop;
  loop.async([&] {
    loop.handOver();
    loop.stop(3);
  });
  loop.run();
  EXPECT_TRUE(loop.isStopping());
}

TEST(EventLoopHandOver, LetsTheLoopRunByItselfAgain) {
  EventLoop loop;
  loop.async([&] { loop.handOver(); });
  loop.run();
  loop.async([&] { loop.stop(5); });
  EXPECT_EQ(loop.run(), 5);
  EXPECT_FALSE(loop.isStopping());
}

}  // namespace
}  // namespace platform
