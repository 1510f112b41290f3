#pragma once

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/XServer.h"

namespace platform {

/// Lets MATE notice after a hold of the display that nobody is there.
///
/// During such a hold its session manager does not look, and afterwards it waits for the X server's
/// idle time to pass the time of its setting. An idle time that has passed it during the hold does
/// not do so again: after the hold the machine would stay awake for good. So the time is counted
/// anew from the end of such a hold. A hold that ends before any setting's time is over leaves the
/// time as it is.
///
/// Where another desktop decides, or the X server cannot be asked, nothing happens. Waits for some
/// bounded calls. Main thread only.
void restartMateIdleTime(Bus& sessionBus, const FindXServer& find);

}  // namespace platform
