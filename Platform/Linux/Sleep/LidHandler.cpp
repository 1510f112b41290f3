#include "Platform/Linux/Sleep/LidHandler.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Platform/Linux/Sleep/LogindList.h"
#include "Platform/Linux/Sleep/Services.h"

namespace platform {
namespace {

/// The user of XFCE's power manager may have left the keys, but not the lid, to logind. LXQt's
/// takes each with a lock of its own; so it spells its name there.
bool takesTheLidAlone(std::string_view holder) {
  return holder == "xfce4-power-manager" || holder == "lxqt-powermanagment";
}

bool takesKeys(std::string_view locks) {
  constexpr std::array<std::string_view, 4> kKeys = {"handle-power-key", "handle-suspend-key",
                                                     "handle-hibernate-key", "handle-reboot-key"};
  return std::ranges::any_of(kKeys, [locks](auto key) { return namesLock(locks, key); });
}

/// MATE's power manager gives the user's name for its own.
std::string nameOf(const ListedInhibitor& desktop) {
  return desktop.why.starts_with("Mate power manager") ? "mate-power-manager" : desktop.holder;
}

}  // namespace

std::optional<std::string> lidHandler(const ListedInhibitor& inhibitor) {
  const bool blocksLid = inhibitor.level > 0 && namesLock(inhibitor.locks, services::kLidLock);
  if (!blocksLid) return std::nullopt;
  if (!takesKeys(inhibitor.locks) && !takesTheLidAlone(inhibitor.holder)) return std::nullopt;
  return nameOf(inhibitor);
}

}  // namespace platform
