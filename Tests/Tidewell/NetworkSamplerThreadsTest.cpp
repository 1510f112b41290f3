#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Tidewell/NetworkSampler.h"

// The sampler between two real threads. The thread sanitizer looks at these tests above all.

namespace tidewell {
namespace {

/// A queue that gives every piece of work a thread of its own. Only one piece runs at a time.
class ThreadQueues : public SerialQueues {
 public:
  ~ThreadQueues() override { join(); }

  std::unique_ptr<SerialQueue> make(const std::string&) override {
    return std::make_unique<Queue>(threads_);
  }

  void join() {
    for (std::thread& thread : threads_)
      thread.join();
    threads_.clear();
  }

 private:
  /// Does not wait for the work: a queue need not.
  class Queue : public SerialQueue {
   public:
    explicit Queue(std::vector<std::thread>& threads) : threads_(threads) {}
    void async(std::function<void()> work) override { threads_.emplace_back(std::move(work)); }

   private:
    std::vector<std::thread>& threads_;
  };

  std::vector<std::thread> threads_;
};

/// Measures the number of the measurement, or hangs until it is cancelled.
class ThreadedMeter : public NetworkMeter {
 public:
  NetworkMeasurement measure(Cancellation& cancellation) override {
    ++measurements_;
    if (hangs) waitFor(cancellation);
    return {NetworkTotals{{1, measurements_}}, ""};
  }

  /// Waits until a measurement hangs.
  void waitUntilItHangs() { hanging_.get_future().wait(); }

  bool hangs = false;

 private:
  void waitFor(Cancellation& cancellation) {
    std::promise<void> cancelled;
    cancellation.onCancel([&cancelled] { cancelled.set_value(); });
    hanging_.set_value();
    cancelled.get_future().wait();
    cancellation.onCancel(nullptr);
  }

  std::uint64_t measurements_ = 0;
  std::promise<void> hanging_;
};

TEST(NetworkSamplerThreads, AnswersWhileItMeasuresElsewhere) {
  ThreadQueues queues;
  ThreadedMeter meter;
  NetworkSampler sampler(meter, queues);
  for (std::uint64_t run = 1; run <= 50; ++run) {
    sampler.refresh();
    sampler.refresh();
    const NetworkTotals meanwhile = sampler.currentTotals();
    EXPECT_LE(meanwhile.size(), 1U);
    queues.join();
    EXPECT_GE(sampler.currentTotals().at(1), run);
  }
}

TEST(NetworkSamplerThreads, EndsAMeasurementThatHangsWhenItIsDestroyed) {
  ThreadQueues queues;
  ThreadedMeter meter;
  meter.hangs = true;
  auto sampler = std::make_unique<NetworkSampler>(meter, queues);
  sampler->refresh();
  meter.waitUntilItHangs();
  sampler.reset();
  queues.join();  // It would not return while the measurement hangs.
}

}  // namespace
}  // namespace tidewell
