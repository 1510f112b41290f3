#pragma once

#include <memory>
#include <string>
#include <utility>

#include "Platform/Linux/Loop/AfterActionQueue.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Linux/Loop/ThreadQueue.h"
#include "Tidewell/Ports/SerialQueue.h"

namespace platform {

/// Makes serial queues. Each has one thread, which starts with the first work. With a loop, which
/// must outlive the queues, they are `AfterActionQueue`s.
class ThreadQueues : public tidewell::SerialQueues {
 public:
  explicit ThreadQueues(EventLoop* loop = nullptr) : loop_(loop) {}

  std::unique_ptr<tidewell::SerialQueue> make(const std::string& label) override {
    auto queue = std::make_unique<ThreadQueue>(label);
    if (!loop_) return queue;
    return std::make_unique<AfterActionQueue>(*loop_, std::move(queue));
  }

 private:
  EventLoop* loop_;
};

}  // namespace platform
