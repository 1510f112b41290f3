#pragma once

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/XServer.h"

namespace platform {

/// Lets XFCE's power manager look again after a hold.
///
/// It looks once, when nobody has used keyboard or mouse for as long as its setting says. If it is
/// held off then, it does not look again before somebody has: after the hold the machine would stay
/// awake for good. So the time is counted anew from the end of such a hold. A hold that ends sooner
/// leaves the time as it is, for otherwise short holds, one after the other, would keep the machine
/// awake.
///
/// Where another desktop decides, or the X server cannot be asked, nothing happens. Waits for some
/// bounded calls. Main thread only.
void restartXfceIdleTime(Bus& sessionBus, const FindXServer& find);

}  // namespace platform
