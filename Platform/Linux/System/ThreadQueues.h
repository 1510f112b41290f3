#pragma once

#include <memory>
#include <string>

#include "Platform/Linux/System/ThreadQueue.h"
#include "Tidewell/Ports/SerialQueue.h"

namespace platform {

/// Makes serial queues with one lazily started thread each.
class ThreadQueues : public tidewell::SerialQueues {
 public:
  std::unique_ptr<tidewell::SerialQueue> make(const std::string& label) override {
    return std::make_unique<ThreadQueue>(label);
  }
};

}  // namespace platform
