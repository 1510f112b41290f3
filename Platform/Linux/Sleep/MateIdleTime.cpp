#include "Platform/Linux/Sleep/MateIdleTime.h"

#include <chrono>

#include "Platform/Linux/Sleep/Services.h"
#include "Platform/Linux/Sleep/XServer.h"

namespace platform {
namespace {

/// The session manager counts whole minutes.
constexpr std::chrono::minutes kShortestIdleDelay{1};

}  // namespace

void restartMateIdleTime(Bus& sessionBus, const FindXServer& find) {
  if (!sessionBus.nameStatus(services::kMatePowerManager).isOwned()) return;
  const auto address = find();
  auto server = address ? XServer::connect(*address) : std::nullopt;
  const auto idle = server ? server->idleTime() : std::nullopt;
  if (idle && *idle >= kShortestIdleDelay) server->restartIdleTime();
}

}  // namespace platform
