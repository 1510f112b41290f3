#pragma once

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/DesktopSetting.h"
#include "Platform/Linux/Sleep/XServer.h"

namespace platform {

/// Lets Cinnamon's power management look again after a hold, and wait no longer than its setting
/// says.
///
/// When nobody has used keyboard or mouse for the setting's time, it locks the screen and lets the
/// machine sleep, once. If a hold that begins meanwhile keeps the machine awake, it does so no more
/// before somebody has used them. And at the end of a hold it looks for how long nobody has. Where
/// that is longer than the setting's time, it doubles the time until it is longer: after a hold of
/// five hours a time of 30 minutes becomes eight hours. So the X server counts anew just before the
/// end, which also lights the screen. A hold that ends before the setting's time is over leaves the
/// count as it is, for otherwise short holds, one after the other, would keep the machine awake.
///
/// To be called before the last hold is given back. Where another desktop decides, where Cinnamon
/// does not let the machine sleep or does not tell, or where the X server cannot be asked, nothing
/// happens. Waits for some bounded calls and tasks, see `findCinnamonDecider`. Main thread only.
void restartCinnamonIdleTime(Bus& systemBus, Bus& sessionBus, const DesktopSettings& settings,
                             const FindXServer& find);

}  // namespace platform
