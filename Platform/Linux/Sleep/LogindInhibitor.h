#pragma once

#include <memory>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/InhibitMechanism.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// Takes logind's `idle` lock, which prevents the system's idle action. It never takes the `sleep`
/// lock, which would also block a suspend that a person asks for.
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
