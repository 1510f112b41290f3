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

// The present state decides, not only the answer: for the system a second request of the same kind
// is an error.

tidewell::LoginItem::Failure MainAppLoginItem::registerItem() {
  @autoreleasepool {
    SMAppService* service = SMAppService.mainAppService;
    NSError* error = nil;
    if ([service registerAndReturnError:&error]) return std::nullopt;
    if (service.status == SMAppServiceStatusEnabled) return std::nullopt;
    return utf8(error.localizedDescription);
  }
}

tidewell::LoginItem::Failure MainAppLoginItem::unregisterItem() {
  @autoreleasepool {
    SMAppService* service = SMAppService.mainAppService;
    if (isGone(service)) return std::nullopt;
    NSError* error = nil;
    if ([service unregisterAndReturnError:&error] || isGone(service)) return std::nullopt;
    return utf8(error.localizedDescription);
  }
}

}  // namespace platform
