#include "Platform/MacOS/Processes/FoundationProcessInfo.h"

#import <Foundation/Foundation.h>

#include "Platform/MacOS/Text/NSText.h"
#include "Tidewell/ForeignText.h"

namespace platform {

std::string FoundationProcessInfo::processName() {
  @autoreleasepool {
    return tidewell::cleaned(utf8(NSProcessInfo.processInfo.processName));
  }
}

}  // namespace platform
