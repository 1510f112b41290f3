#include "Platform/Linux/Sleep/CinnamonIdleTime.h"

#include <optional>

#include "Platform/Linux/Sleep/Services.h"
#include "Platform/Linux/Sleep/SleepDeciders.h"
#include "Tidewell/Ports/Clock.h"

namespace platform {
namespace {

using tidewell::Seconds;

/// Cinnamon adds two seconds to the idle time, and looks some time after this.
constexpr Seconds kMargin{5};

}  // namespace

void restartCinnamonIdleTime(Bus& systemBus, Bus& sessionBus, const DesktopSettings& settings,
                             const FindXServer& find) {
  if (!sessionBus.nameStatus(services::kCinnamonPowerManager).isOwned()) return;
  const auto address = find();
  if (!address) return;
  const SleepDecider cinnamon = findCinnamonDecider(systemBus, settings);
  if (cinnamon.action != SleepDecider::Action::sleeps || !cinnamon.after) return;
  auto server = XServer::connect(*address);
  const auto idle = server ? server->idleTime() : std::nullopt;
  if (idle && Seconds(*idle) + kMargin >= *cinnamon.after) server->restartIdleTime();
}

}  // namespace platform
