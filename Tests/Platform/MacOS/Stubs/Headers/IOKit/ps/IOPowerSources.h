#pragma once

// The power sources of IOKit, for systems without it. `PowerService.h` has their state.

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

CFTypeRef IOPSCopyPowerSourcesInfo();
CFArrayRef IOPSCopyPowerSourcesList(CFTypeRef information);
/// The answer belongs to `information`.
CFDictionaryRef IOPSGetPowerSourceDescription(CFTypeRef information, CFTypeRef source);
}
