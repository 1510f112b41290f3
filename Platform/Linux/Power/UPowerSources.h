#pragma once

#include <filesystem>
#include <optional>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Bus/RemoteProperties.h"
#include "Platform/Linux/Power/PowerSupplyFiles.h"
#include "Tidewell/Ports/PowerSources.h"

namespace platform {

/// Reads the power sources from UPower, or from the kernel when UPower is absent, and the
/// power-saving mode from the power profiles service.
///
/// Each service is read once, and its changes are followed from then on, so that a tick costs no
/// call. The first reading starts UPower if that is possible, and no later reading does. The
/// profiles service is never started, because its start would change the machine's settings.
class UPowerSources : public tidewell::PowerSources {
 public:
  /// `systemBus` must outlive this.
  explicit UPowerSources(Bus& systemBus,
                         std::filesystem::path supplies = "/sys/class/power_supply");

  bool isLowPowerModeEnabled() override;
  /// All batteries together, as one source.
  std::optional<tidewell::PowerSource> source() override;
  /// Only UPower tells.
  std::optional<bool> isLidClosed() override;

 private:
  std::optional<PowerSituation> situation();

  std::filesystem::path supplies_;
  RemoteProperties daemon_;
  RemoteProperties displayDevice_;
  RemoteProperties profiles_;
  RemoteProperties olderProfiles_;
};

}  // namespace platform
