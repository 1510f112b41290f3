#include "Platform/Linux/Sleep/XfceIdleTime.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "Platform/Linux/Sleep/DesktopSetting.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Platform/Linux/Sleep/XServer.h"

namespace platform {
namespace {

/// After how long without anybody XFCE would first look; absent where it never does.
std::optional<std::chrono::minutes> firstLook(Bus& sessionBus) {
  std::optional<std::chrono::minutes> first;
  for (const char* key : {"inactivity-on-ac", "inactivity-on-battery"}) {
    const auto minutes = readXfceSetting(sessionBus, key);
    if (!minutes || isNeverForXfce(*minutes)) continue;
    const std::chrono::minutes wait(*minutes);
    first = first ? std::min(*first, wait) : wait;
  }
  return first;
}

}  // namespace

void restartXfceIdleTime(Bus& sessionBus, const FindXServer& find) {
  if (!sessionBus.nameStatus(services::kXfcePowerManager).isOwned()) return;
  const auto look = firstLook(sessionBus);
  const auto address = look ? find() : std::nullopt;
  auto server = address ? XServer::connect(*address) : std::nullopt;
  const auto idle = server ? server->idleTime() : std::nullopt;
  if (idle && *idle >= *look) server->restartIdleTime();
}

}  // namespace platform
