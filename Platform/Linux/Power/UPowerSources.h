#pragma once

#include <filesystem>
#include <optional>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Bus/RemoteProperties.h"
#include "Platform/Linux/Power/PowerSupplyFiles.h"
#include "Tidewell/Ports/PowerSources.h"

namespace platform {

/// Power sources as UPower tells them, or the kernel where UPower is absent, and the power-saving
/// mode as the power profiles service tells it.
///
/// The services are read once and followed from then on, so that a tick costs no call. UPower is
/// started at the first reading if it can be, and never again; the profiles service, which would
/// change the machine's settings by starting, never.
class UPowerSources : public tidewell::PowerSources {
 public:
  /// `systemBus` must outlive this.
  explicit UPowerSources(Bus& systemBus,
                         std::filesystem::path supplies = "/sys/class/power_supply");

  bool isLowPowerModeEnabled() override;
  /// All batteries as one source.
  std::optional<tidewell::PowerSource> source() override;

 private:
  std::optional<PowerSituation> situation();

  std::filesystem::path supplies_;
  RemoteProperties daemon_;
  RemoteProperties displayDevice_;
  RemoteProperties profiles_;
  RemoteProperties olderProfiles_;
};

}  // namespace platform
