#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Sleep/Inhibition.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/PowerManagement.h"

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
  /// Gets the reasons of this program's wishes that the service has, as it was told them.
  using Listed = std::function<void(std::vector<std::string> reasons)>;

  virtual ~InhibitMechanism() = default;

  /// The well-known name on its bus.
  [[nodiscard]] virtual const char* serviceName() const = 0;

  /// Asks the service. What it grants after this has given up waiting goes to `late`.
  virtual Taken take(tidewell::AssertionKind kind, const std::string& reason, Late late) = 0;

  /// The text by which the service is told `reason`.
  [[nodiscard]] virtual std::string told(const std::string& reason) const = 0;

  /// How long the service lets a wish lie before it heeds it.
  [[nodiscard]] virtual tidewell::Seconds timeToTakeEffect() const {
    return tidewell::Seconds::zero();
  }

  /// Asks for the service's own list and does not wait. `listed` runs from the loop, and not at all
  /// where the service does not tell. Dropping the result gives the question up; null where there
  /// is nothing to ask.
  [[nodiscard]] virtual std::shared_ptr<void> list(Listed /*listed*/) { return nullptr; }
  /// The service has gone: what was remembered of its list is void.
  virtual void forgetList() {}
};

}  // namespace platform
