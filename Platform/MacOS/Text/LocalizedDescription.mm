#include "Platform/MacOS/Text/LocalizedDescription.h"

#import <Foundation/Foundation.h>

#include "Platform/MacOS/Text/NSText.h"

namespace platform {

std::string localizedDescription(int errorNumber) {
  @autoreleasepool {
    NSError* error = [NSError errorWithDomain:NSPOSIXErrorDomain code:errorNumber userInfo:nil];
    return utf8(error.localizedDescription);
  }
}

}  // namespace platform
