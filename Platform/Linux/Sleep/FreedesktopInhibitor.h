#pragma once

#include <memory>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/InhibitMechanism.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// A session service with the methods `Inhibit(application, reason)` and `UnInhibit(cookie)`.
class FreedesktopInhibitor : public InhibitMechanism {
 public:
  /// org.freedesktop.PowerManagement: keeps the system awake, on KDE and XFCE.
  static FreedesktopInhibitor powerManagement(Bus& sessionBus);
  /// org.freedesktop.ScreenSaver: keeps the screen lit.
  static FreedesktopInhibitor screenSaver(Bus& sessionBus);

  [[nodiscard]] const char* serviceName() const override { return service_; }
  Taken take(tidewell::AssertionKind kind, const std::string& reason, Late late) override;
  [[nodiscard]] std::string told(const std::string& reason) const override;
  [[nodiscard]] std::shared_ptr<void> list(Listed listed) override;
  /// On KDE, PowerDevil implements both services. It heeds no wish that is younger than five
  /// seconds.
  [[nodiscard]] tidewell::Seconds timeToTakeEffect() const override { return tidewell::Seconds(5); }

 private:
  FreedesktopInhibitor(Bus& sessionBus, const char* service, const char* path,
                       const char* interface);
  std::shared_ptr<void> listPolicyAgent(Listed listed);
  std::shared_ptr<void> askWhetherAnybodyInhibits(Listed listed);

  Bus& sessionBus_;
  const char* service_;
  const char* path_;
  const char* interface_;
};

}  // namespace platform
