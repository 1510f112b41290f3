#include "Platform/MacOS/Power/LowPowerMode.h"

#import <Foundation/Foundation.h>

namespace platform {

bool isLowPowerModeEnabled() {
  @autoreleasepool {
    return NSProcessInfo.processInfo.isLowPowerModeEnabled;
  }
}

}  // namespace platform
