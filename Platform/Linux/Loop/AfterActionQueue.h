#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "Platform/Linux/Loop/EventLoop.h"
#include "Tidewell/Ports/SerialQueue.h"

namespace platform {

/// A serial queue for submitters on the loop's thread. When an action of the loop submits work, the
/// work begins after the action, so that it does not change what the action is still reading.
///
/// Other work begins at once. The loop's thread only; the loop must outlive the queue.
class AfterActionQueue : public tidewell::SerialQueue {
 public:
  AfterActionQueue(EventLoop& loop, std::shared_ptr<tidewell::SerialQueue> queue)
      : loop_(loop), queue_(std::move(queue)) {}

  void async(std::function<void()> work) override {
    if (!loop_.isDispatching()) return queue_->async(std::move(work));
    loop_.async([weak = std::weak_ptr(queue_), work = std::move(work)]() mutable {
      if (const auto queue = weak.lock()) queue->async(std::move(work));
    });
  }

 private:
  EventLoop& loop_;
  std::shared_ptr<tidewell::SerialQueue> queue_;
};

}  // namespace platform
