#include "Platform/Linux/Sleep/CinnamonIdleTime.h"

#include <algorithm>
#include <optional>

#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/Ports/Clock.h"

namespace platform {
namespace {

using tidewell::Seconds;

/// Cinnamon adds two seconds to the idle time, and looks some time after this.
constexpr Seconds kMargin{5};

/// The shorter time counts, because the source of power may change during a hold. Absent where the
/// machine never sleeps.
std::optional<Seconds> shortestTimeout(const DesktopSettings& settings) {
  std::optional<Seconds> shortest;
  for (const char* key : services::kInactiveTimeouts) {
    const auto seconds = settings.number(services::kCinnamonPowerSchema, key);
    if (!seconds || *seconds <= 0) continue;
    const Seconds timeout(static_cast<double>(*seconds));
    shortest = shortest ? std::min(*shortest, timeout) : timeout;
  }
  return shortest;
}

}  // namespace

void restartCinnamonIdleTime(Bus& sessionBus, const DesktopSettings& settings,
                             const FindXServer& find) {
  if (!sessionBus.nameStatus(services::kCinnamonPowerManager).isOwned()) return;
  const auto address = find();
  auto server = address ? XServer::connect(*address) : std::nullopt;
  const auto idle = server ? server->idleTime() : std::nullopt;
  if (!idle) return;
  const auto timeout = shortestTimeout(settings);
  if (timeout && Seconds(*idle) + kMargin >= *timeout) server->restartIdleTime();
}

}  // namespace platform
