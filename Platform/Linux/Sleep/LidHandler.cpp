#include "Platform/Linux/Sleep/LidHandler.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Platform/Linux/Sleep/LogindList.h"
#include "Platform/Linux/Sleep/Services.h"

namespace platform {
namespace {

/// The user of this power manager may have left the keys, but not the lid, to logind.
constexpr std::string_view kXfce = "xfce4-power-manager";

bool takesKeys(std::string_view locks) {
  constexpr std::array<std::string_view, 4> kKeys = {"handle-power-key", "handle-suspend-key",
                                                     "handle-hibernate-key", "handle-reboot-key"};
  return std::ranges::any_of(kKeys, [locks](auto key) { return namesLock(locks, key); });
}

}  // namespace

std::optional<std::string> lidHandler(const ListedInhibitor& inhibitor) {
  const bool blocksLid = inhibitor.level > 0 && namesLock(inhibitor.locks, services::kLidLock);
  if (!blocksLid) return std::nullopt;
  if (!takesKeys(inhibitor.locks) && inhibitor.holder != kXfce) return std::nullopt;
  return inhibitor.holder;
}

}  // namespace platform
