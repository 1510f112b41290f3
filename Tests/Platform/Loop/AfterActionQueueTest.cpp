#include "Platform/Linux/Loop/AfterActionQueue.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

namespace platform {
namespace {

/// A queue that runs all work at once.
class ImmediateQueue : public tidewell::SerialQueue {
 public:
  void async(std::function<void()> work) override { work(); }
};

class AfterActionQueueTest : public ::testing::Test {
 protected:
  EventLoop loop;
  std::optional<AfterActionQueue> queue{std::in_place, loop, std::make_shared<ImmediateQueue>()};
};

TEST_F(AfterActionQueueTest, WorkOfAnActionBeginsAfterTheAction) {
  std::vector<int> order;
  loop.async([&] {
    queue->async([&] {
      order.push_back(2);
      loop.stop();
    });
    order.push_back(1);
  });
  loop.run();
  EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST_F(AfterActionQueueTest, WorkFromOutsideBeginsAtOnce) {
  bool ran = false;
  queue->async([&] { ran = true; });
  EXPECT_TRUE(ran);
}

TEST_F(AfterActionQueueTest, DropsWorkThatHasNotBegunWhenItIsDestroyed) {
  bool ran = false;
  loop.async([&] {
    queue->async([&] { ran = true; });
    queue.reset();
    loop.async([&] { loop.stop(); });
  });
  loop.run();
  EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace platform
