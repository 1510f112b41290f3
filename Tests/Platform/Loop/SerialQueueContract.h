#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "Tidewell/Ports/SerialQueue.h"

namespace platform {

/// Runs one piece of work and waits for it.
template <typename Work>
void runOn(tidewell::SerialQueue& queue, Work work) {
  const auto done = std::make_shared<std::promise<void>>();
  queue.async([&work, done] {
    work();
    done->set_value();
  });
  done->get_future().wait();
}

/// The contract of serial queues, which every system's queues keep.
template <typename Queues>
class SerialQueueContract : public ::testing::Test {
 protected:
  Queues queues_;
};

TYPED_TEST_SUITE_P(SerialQueueContract);

TYPED_TEST_P(SerialQueueContract, RunsWorkInTheOrderItWasSubmitted) {
  const auto queue = this->queues_.make("order");
  std::vector<int> order;
  for (int number = 1; number <= 5; ++number) {
    queue->async([&order, number] { order.push_back(number); });
  }
  runOn(*queue, [] {});
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4, 5}));
}

TYPED_TEST_P(SerialQueueContract, RunsWorkOnAnotherThread) {
  const auto queue = this->queues_.make("elsewhere");
  std::thread::id worker;
  runOn(*queue, [&] { worker = std::this_thread::get_id(); });
  EXPECT_NE(worker, std::this_thread::get_id());
}

TYPED_TEST_P(SerialQueueContract, RunsOnePieceAtATimeWhoeverSubmits) {
  const auto queue = this->queues_.make("one at a time");
  int unguarded = 0;
  const auto submitMany = [&] {
    for (int count = 0; count < 500; ++count) {
      queue->async([&unguarded] { ++unguarded; });
    }
  };
  std::thread first(submitMany);
  std::thread second(submitMany);
  first.join();
  second.join();
  int seen = 0;
  runOn(*queue, [&] { seen = unguarded; });
  EXPECT_EQ(seen, 1000);
}

TYPED_TEST_P(SerialQueueContract, EndsWithoutEverHavingRun) {
  EXPECT_NE(this->queues_.make("unused"), nullptr);
}

TYPED_TEST_P(SerialQueueContract, DropsWhatHasNotBegunWhenItEnds) {
  auto queue = this->queues_.make("end");
  const auto begun = std::make_shared<std::promise<void>>();
  const auto secondRan = std::make_shared<std::atomic<bool>>(false);
  queue->async([begun] {
    begun->set_value();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  });
  queue->async([secondRan] { *secondRan = true; });
  begun->get_future().wait();
  queue.reset();
  // Either the work runs, or it is dropped together with what it holds.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (secondRan.use_count() > 1 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_EQ(secondRan.use_count(), 1);
  EXPECT_FALSE(*secondRan);
}

REGISTER_TYPED_TEST_SUITE_P(SerialQueueContract, RunsWorkInTheOrderItWasSubmitted,
                            RunsWorkOnAnotherThread, RunsOnePieceAtATimeWhoeverSubmits,
                            EndsWithoutEverHavingRun, DropsWhatHasNotBegunWhenItEnds);

}  // namespace platform
