#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/BusHandles.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// One wish that a service has granted. Destroying it takes the wish back without waiting. The wish
/// also ends when the service has gone. Main thread only.
class Inhibition {
 public:
  Inhibition() = default;
  virtual ~Inhibition() = default;
  Inhibition(const Inhibition&) = delete;
  Inhibition& operator=(const Inhibition&) = delete;
};

/// One service that can keep the machine or its screen awake, and the way to ask it. Calls wait no
/// longer than any call of the bus. Main thread only.
class InhibitMechanism {
 public:
  /// Either an inhibition or a negative errno.
  struct Taken {
    int error = 0;
    std::unique_ptr<Inhibition> inhibition;
  };
  using Late = std::function<void(std::unique_ptr<Inhibition>)>;
  /// Gets the reasons of this program's wishes on the service's list, in the form of `told`.
  using Listed = std::function<void(std::vector<std::string> reasons)>;

  virtual ~InhibitMechanism() = default;

  /// The well-known name of the service on its bus.
  [[nodiscard]] virtual const char* serviceName() const = 0;

  /// Asks the service and waits for its answer. If the service grants the wish only after the wait,
  /// `late` gets the inhibition.
  virtual Taken take(tidewell::AssertionKind kind, const std::string& reason, Late late) = 0;

  /// The text by which the service is told `reason`.
  [[nodiscard]] virtual std::string told(const std::string& reason) const = 0;

  /// How old a wish must be before the service heeds it.
  [[nodiscard]] virtual tidewell::Seconds timeToTakeEffect() const {
    return tidewell::Seconds::zero();
  }

  /// Asks for the service's own list and does not wait. `listed` runs from the loop, but only if
  /// the service answers. Dropping the result cancels the question. Null when the service cannot be
  /// asked.
  [[nodiscard]] virtual std::shared_ptr<void> list(Listed /*listed*/) { return nullptr; }
  /// Forgets what is known of the service's list, because the service has gone.
  virtual void forgetList() {}
};

/// The result of `InhibitMechanism::list` for a pending call; null for an empty slot.
inline std::shared_ptr<void> asQuestion(BusSlot slot) {
  return slot ? std::make_shared<BusSlot>(std::move(slot)) : nullptr;
}

}  // namespace platform
