#include <gtest/gtest.h>

#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Tests/Fakes/FakeClock.h"
#include "Tidewell/NetworkSampler.h"

// The sampler between two real threads; above all for the thread sanitizer to look at.

namespace tidewell {
namespace {

/// A queue that gives every piece of work a thread of its own, and is used by one piece at a time.
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
  /// Does not wait for its work, as a queue need not.
  class Queue : public SerialQueue {
   public:
    explicit Queue(std::vector<std::thread>& threads) : threads_(threads) {}
    void async(std::function<void()> work) override { threads_.emplace_back(std::move(work)); }

   private:
    std::vector<std::thread>& threads_;
  };

  std::vector<std::thread> threads_;
};

/// Launches a tool that prints its number, or one that prints nothing until it is terminated.
class ThreadedLauncher : public TaskLauncher {
 public:
  Launch launch(const std::string&, const std::vector<std::string>&) override {
    ++launches_;
    if (hangs) return {std::make_unique<HangingTask>(reading_), ""};
    return {std::make_unique<PrintingTask>("a.1," + std::to_string(launches_) + ",0,\n"), ""};
  }

  /// Waits until a hanging tool is being read.
  void waitForReader() { reading_.get_future().wait(); }

  bool hangs = false;

 private:
  class PrintingTask : public Task {
   public:
    explicit PrintingTask(std::string output) : output_(std::move(output)) {}
    std::optional<std::string> readToEnd(std::size_t) override { return output_; }
    bool isRunning() override { return false; }
    void terminate() override {}

   private:
    std::string output_;
  };

  class HangingTask : public Task {
   public:
    explicit HangingTask(std::promise<void>& reading) : reading_(reading) {}
    std::optional<std::string> readToEnd(std::size_t) override {
      reading_.set_value();
      std::unique_lock lock(mutex_);
      ended_.wait(lock, [this] { return terminated_; });
      return "";
    }
    bool isRunning() override {
      const std::lock_guard lock(mutex_);
      return !terminated_;
    }
    void terminate() override {
      const std::lock_guard lock(mutex_);
      terminated_ = true;
      ended_.notify_all();
    }

   private:
    std::promise<void>& reading_;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool terminated_ = false;
  };

  int launches_ = 0;
  std::promise<void> reading_;
};

TEST(NetworkSamplerThreads, AnswersWhileTheToolRunsElsewhere) {
  FakeClock clock;
  ThreadQueues queues;
  ThreadedLauncher launcher;
  NetworkSampler sampler(launcher, queues, clock);
  for (std::uint64_t run = 1; run <= 50; ++run) {
    sampler.refresh();
    sampler.refresh();
    const NetworkTotals meanwhile = sampler.currentTotals();
    EXPECT_LE(meanwhile.size(), 1U);
    queues.join();
    EXPECT_GE(sampler.currentTotals().at(1), run);
  }
}

TEST(NetworkSamplerThreads, EndsAToolThatHangsWhenItIsDestroyed) {
  FakeClock clock;
  ThreadQueues queues;
  ThreadedLauncher launcher;
  launcher.hangs = true;
  auto sampler = std::make_unique<NetworkSampler>(launcher, queues, clock);
  sampler->refresh();
  launcher.waitForReader();
  sampler.reset();
  queues.join();  // It would not return while the tool hangs.
}

}  // namespace
}  // namespace tidewell
