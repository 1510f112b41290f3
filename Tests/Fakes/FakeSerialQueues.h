#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/SerialQueue.h"

namespace tidewell {

/// Queues whose work waits until the test runs it, on the test's own thread.
class FakeSerialQueues : public SerialQueues {
 public:
  explicit FakeSerialQueues(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : shared_(std::make_shared<Shared>()) {
    shared_->calls = std::move(calls);
  }

  std::unique_ptr<SerialQueue> make(const std::string& label) override {
    labels.push_back(label);
    return std::make_unique<Queue>(shared_, labels.size());
  }

  /// Runs the piece of work that has waited longest. False when none waits.
  bool runNext() {
    if (shared_->waiting.empty()) return false;
    // The work may submit more, or end its own queue.
    const auto work = std::move(shared_->waiting.front().second);
    shared_->waiting.pop_front();
    work();
    return true;
  }

  void runAll() {
    while (runNext()) {
    }
  }

  [[nodiscard]] std::size_t waiting() const { return shared_->waiting.size(); }

  /// From now on `async` does the work before it returns, as if the queue were very quick.
  void runAtOnce() { shared_->runsAtOnce = true; }

  /// From now on the work of a queue that is destroyed still runs, as if it had just begun.
  void keepWorkOfDestroyedQueues() { shared_->keepsWork = true; }

  std::vector<std::string> labels;  ///< Of every queue made.

 private:
  struct Shared {
    std::deque<std::pair<std::size_t, std::function<void()>>>
        waiting;  ///< With its queue's number.
    std::shared_ptr<CallLog> calls;
    bool keepsWork = false;
    bool runsAtOnce = false;
  };

  class Queue : public SerialQueue {
   public:
    Queue(std::shared_ptr<Shared> shared, std::size_t number)
        : shared_(std::move(shared)), number_(number) {}
    ~Queue() override {
      if (shared_->keepsWork) return;
      std::erase_if(shared_->waiting, [this](const auto& piece) { return piece.first == number_; });
    }
    void async(std::function<void()> work) override {
      shared_->calls->add("submit work to a queue");
      if (shared_->runsAtOnce) return work();
      shared_->waiting.emplace_back(number_, std::move(work));
    }

   private:
    std::shared_ptr<Shared> shared_;
    std::size_t number_;
  };

  std::shared_ptr<Shared> shared_;
};

}  // namespace tidewell
