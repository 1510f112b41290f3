#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Platform/Linux/Sleep/HoldKind.h"
#include "Platform/Linux/Sleep/Inhibition.h"
#include "Tidewell/Ports/Clock.h"

namespace platform {

/// One service that can keep the machine or its screen awake, and its way of being asked. Calls are
/// bounded as all calls of the bus are. Main thread only.
class InhibitMechanism {
 public:
  /// Either the inhibition or a negative errno.
  struct Taken {
    int error = 0;
    std::unique_ptr<Inhibition> inhibition;
  };
  using Late = std::function<void(std::unique_ptr<Inhibition>)>;

  virtual ~InhibitMechanism() = default;

  /// The well-known name on its bus.
  [[nodiscard]] virtual const char* serviceName() const = 0;

  /// Asks the service. What it grants after this has given up waiting goes to `late`.
  virtual Taken take(HoldKind kind, const std::string& reason, Late late) = 0;

  /// How long the service lets a wish lie before it heeds it.
  [[nodiscard]] virtual tidewell::Seconds timeToTakeEffect() const {
    return tidewell::Seconds::zero();
  }
};

}  // namespace platform
