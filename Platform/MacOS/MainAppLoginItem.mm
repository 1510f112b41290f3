#include "Platform/MacOS/MainAppLoginItem.h"

#import <Foundation/Foundation.h>
#import <ServiceManagement/ServiceManagement.h>

#include "Platform/MacOS/NSText.h"

namespace platform {

std::optional<std::string> MainAppLoginItem::registerItem() {
  @autoreleasepool {
    NSError* error = nil;
    if ([SMAppService.mainAppService registerAndReturnError:&error]) return std::nullopt;
    return utf8(error.localizedDescription);
  }
}

std::optional<std::string> MainAppLoginItem::unregisterItem() {
  @autoreleasepool {
    NSError* error = nil;
    if ([SMAppService.mainAppService unregisterAndReturnError:&error]) return std::nullopt;
    return utf8(error.localizedDescription);
  }
}

}  // namespace platform
