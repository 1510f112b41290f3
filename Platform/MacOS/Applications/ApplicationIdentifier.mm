#include "Platform/MacOS/Applications/ApplicationIdentifier.h"

#import <AppKit/AppKit.h>

#include "Platform/MacOS/Text/NSText.h"

namespace platform {

std::string applicationIdentifier(std::int32_t pid) {
  @autoreleasepool {
    return utf8(
        [NSRunningApplication runningApplicationWithProcessIdentifier:pid].bundleIdentifier);
  }
}

}  // namespace platform
