#include "Staylit/AppKit/Status/AppKitStatusService.h"

#include <chrono>
#include <string>

namespace staylit {

CFStringRef AppKitStatusService::portName() { return CFSTR("com.staylit.app.status"); }

AppKitStatusService::AppKitStatusService(StatusReporter& reporter) : reporter_(reporter) {
  CFMessagePortContext context{};
  context.info = this;
  port_ = platform::CFRef<CFMessagePortRef>::adopt(
      CFMessagePortCreateLocal(kCFAllocatorDefault, portName(), answer, &context, nullptr));
  if (!port_) return;
  const auto source = platform::CFRef<CFRunLoopSourceRef>::adopt(
      CFMessagePortCreateRunLoopSource(kCFAllocatorDefault, port_.get(), 0));
  CFRunLoopAddSource(CFRunLoopGetMain(), source.get(), kCFRunLoopCommonModes);
}

AppKitStatusService::~AppKitStatusService() {
  if (port_) CFMessagePortInvalidate(port_.get());
}

CFDataRef AppKitStatusService::answer(CFMessagePortRef /*port*/, SInt32 /*message*/,
                                      CFDataRef /*data*/, void* info) {
  const auto& self = *static_cast<const AppKitStatusService*>(info);
  const std::string json = self.reporter_.report().json(
      std::chrono::time_point_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now()));
  // The port gives up this reference when it has sent the answer.
  return CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(json.data()),
                      static_cast<CFIndex>(json.size()));
}

}  // namespace staylit
