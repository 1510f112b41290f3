#pragma once

#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/InhibitMechanism.h"

namespace platform {

/// The session manager of GNOME, MATE and Cinnamon.
class SessionManagerInhibitor : public InhibitMechanism {
 public:
  /// `sessionBus` must outlive this and what it takes.
  explicit SessionManagerInhibitor(Bus& sessionBus);

  [[nodiscard]] const char* serviceName() const override;
  Taken take(HoldKind kind, const std::string& reason, Late late) override;

 private:
  Bus& sessionBus_;
};

}  // namespace platform
