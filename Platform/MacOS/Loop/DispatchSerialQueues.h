#pragma once

#include "Tidewell/Ports/SerialQueue.h"

namespace platform {

/// Serial dispatch queues of utility quality of service.
class DispatchSerialQueues final : public tidewell::SerialQueues {
 public:
  std::unique_ptr<tidewell::SerialQueue> make(const std::string& label) override;
};

}  // namespace platform
