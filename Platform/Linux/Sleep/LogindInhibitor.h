#pragma once

#include <memory>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/InhibitMechanism.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// logind's `idle` lock: keeps the system from its own idle action, whatever is on the screen.
/// Never `sleep`, which would stop a person's own suspend as well.
class LogindInhibitor : public InhibitMechanism {
 public:
  /// `systemBus` must outlive this.
  explicit LogindInhibitor(Bus& systemBus);

  [[nodiscard]] const char* serviceName() const override;
  Taken take(tidewell::AssertionKind kind, const std::string& reason, Late late) override;
  [[nodiscard]] std::string told(const std::string& reason) const override;
  [[nodiscard]] std::shared_ptr<void> list(Listed listed) override;

 private:
  Bus& systemBus_;
};

}  // namespace platform
