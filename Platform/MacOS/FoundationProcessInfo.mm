#include "Platform/MacOS/FoundationProcessInfo.h"

#import <Foundation/Foundation.h>

#include "Platform/MacOS/NSText.h"

namespace platform {

std::string FoundationProcessInfo::processName() {
  @autoreleasepool {
    return utf8(NSProcessInfo.processInfo.processName);
  }
}

}  // namespace platform
