#include "Platform/Linux/Sleep/LxqtIdleTime.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "Platform/Linux/Files/XdgFolders.h"
#include "Platform/Linux/Sleep/LxqtSettings.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Platform/Linux/Sleep/XServer.h"

namespace platform {
namespace {

using std::chrono::milliseconds;
using tidewell::AssertionKind;
using tidewell::Seconds;

/// A change of the watcher's settings counts after so long at the latest, which is less than the
/// shortest time that the watcher can be set to.
constexpr Seconds kLongestPause{15};
constexpr Seconds kShortestPause{1};
/// How long before the watcher acts the count is restarted at the earliest. Twice the pause, so
/// that one of the looks is in time; no longer, so that whatever darkens or locks the screen sooner
/// than the watcher acts still does.
constexpr Seconds kLongestMargin = 2 * kLongestPause;

bool isKeptOff(LxqtSettings::Deed deed, AssertionKind kind) {
  if (deed == LxqtSettings::Deed::toTheScreen) return kind == AssertionKind::display;
  return deed == LxqtSettings::Deed::endsWork;
}

/// After how long the watcher would do what it is to be kept from. The shorter time counts, because
/// the source of power may change at any moment.
std::optional<milliseconds> firstDeed(const LxqtSettings& settings, AssertionKind kind) {
  std::optional<milliseconds> first;
  for (const bool isOnAC : {true, false}) {
    if (!isKeptOff(settings.deed(isOnAC), kind)) continue;
    first = std::min(first.value_or(milliseconds::max()), settings.after(isOnAC));
  }
  return first;
}

bool isInCharge(Bus& sessionBus) {
  const char* wayland = std::getenv("WAYLAND_DISPLAY");
  const bool isWayland = wayland != nullptr && *wayland != '\0';
  return !isWayland && sessionBus.nameStatus(services::kLxqtPowerManager).isOwned();
}

std::optional<XServer> serverOf(const FindXServer& find) {
  const auto address = find();
  return address ? XServer::connect(*address) : std::nullopt;
}

/// Only a hold of the display may light the screen.
void restart(XServer& server, AssertionKind kind) {
  if (kind == AssertionKind::display) {
    server.restartIdleTime();
  } else {
    server.restartIdleTimeOnly();
  }
}

}  // namespace

bool canKeepOffLxqt(Bus& sessionBus, const FindXServer& find) {
  if (!isInCharge(sessionBus)) return false;
  auto server = serverOf(find);
  return server && server->idleTime();
}

std::optional<Seconds> keepOffLxqt(Bus& sessionBus, const FindXServer& find, AssertionKind kind) {
  if (!isInCharge(sessionBus)) return std::nullopt;
  const auto deed = firstDeed(LxqtSettings::read(xdgConfigFolders()), kind);
  if (!deed) return kLongestPause;
  const Seconds margin = std::min(Seconds(*deed) / 2, kLongestMargin);
  auto server = serverOf(find);
  const auto idle = server ? server->idleTime() : std::nullopt;
  if (idle && *idle >= Seconds(*deed) - margin) restart(*server, kind);
  return std::clamp(Seconds(*deed) / 4, kShortestPause, kLongestPause);
}

}  // namespace platform
