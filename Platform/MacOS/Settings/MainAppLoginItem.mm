#include "Platform/MacOS/Settings/MainAppLoginItem.h"

#import <Foundation/Foundation.h>
#import <ServiceManagement/ServiceManagement.h>

#include "Platform/MacOS/Text/NSText.h"

namespace platform {
namespace {

bool isGone(SMAppService* service) {
  const SMAppServiceStatus status = service.status;
  return status == SMAppServiceStatusNotRegistered || status == SMAppServiceStatusNotFound;
}

}  // namespace

// What there is decides, and not the answer alone: the system calls it an error to be told twice.

std::optional<std::string> MainAppLoginItem::registerItem() {
  @autoreleasepool {
    SMAppService* service = SMAppService.mainAppService;
    NSError* error = nil;
    if ([service registerAndReturnError:&error]) return std::nullopt;
    if (service.status == SMAppServiceStatusEnabled) return std::nullopt;
    return utf8(error.localizedDescription);
  }
}

std::optional<std::string> MainAppLoginItem::unregisterItem() {
  @autoreleasepool {
    SMAppService* service = SMAppService.mainAppService;
    if (isGone(service)) return std::nullopt;
    NSError* error = nil;
    if ([service unregisterAndReturnError:&error] || isGone(service)) return std::nullopt;
    return utf8(error.localizedDescription);
  }
}

}  // namespace platform
