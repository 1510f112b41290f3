#include "Platform/MacOS/Power/IOKitPowerSources.h"

#import <Foundation/Foundation.h>
#include <IOKit/ps/IOPowerSources.h>

#include <cstddef>

#include "Platform/MacOS/CoreFoundation/CFCast.h"
#include "Platform/MacOS/CoreFoundation/CFProperties.h"
#include "Platform/MacOS/CoreFoundation/CFRef.h"
#include "Platform/MacOS/Power/PowerSourceDescription.h"

namespace platform {
bool IOKitPowerSources::isLowPowerModeEnabled() {
  @autoreleasepool {
    return NSProcessInfo.processInfo.isLowPowerModeEnabled;
  }
}

std::optional<tidewell::PowerSource> IOKitPowerSources::source() {
  // It owns the descriptions, so it stays as long as they are read.
  const auto information = CFRef<CFTypeRef>::adopt(IOPSCopyPowerSourcesInfo());
  if (!information) return std::nullopt;
  const auto list = CFRef<CFArrayRef>::adopt(IOPSCopyPowerSourcesList(information.get()));
  const CFArrayRef sources = asArray(list.get());
  if (sources == nullptr) return std::nullopt;
  const auto describe = [&](std::size_t index) {
    const CFTypeRef source = CFArrayGetValueAtIndex(sources, static_cast<CFIndex>(index));
    return propertyDictionary(IOPSGetPowerSourceDescription(information.get(), source));
  };
  return firstPowerSource(static_cast<std::size_t>(CFArrayGetCount(sources)), describe);
}

}  // namespace platform
