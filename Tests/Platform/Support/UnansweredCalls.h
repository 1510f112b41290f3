#pragma once

#include <systemd/sd-bus.h>

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "Platform/Linux/Bus/BusHandles.h"

namespace platform::testing {

/// Keeps the calls that a silent service has not answered yet. For the service's thread only.
class UnansweredCalls {
 public:
  void keep(sd_bus_message* call) { calls_.emplace_back(sd_bus_message_ref(call)); }

  [[nodiscard]] std::size_t count() const { return calls_.size(); }

  void answer(const std::function<void(sd_bus_message*)>& answer) {
    for (const BusMessage& call : std::exchange(calls_, {}))
      answer(call.get());
  }

 private:
  std::vector<BusMessage> calls_;
};

}  // namespace platform::testing
