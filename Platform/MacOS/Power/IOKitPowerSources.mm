#include "Platform/MacOS/Power/IOKitPowerSources.h"

#import <Foundation/Foundation.h>
#include <IOKit/ps/IOPowerSources.h>

#include <utility>

#include "Platform/MacOS/CoreFoundation/CFCast.h"
#include "Platform/MacOS/CoreFoundation/CFProperties.h"
#include "Platform/MacOS/CoreFoundation/CFRef.h"

namespace platform {
namespace {

class IOKitPowerSourcesSnapshot final : public tidewell::PowerSourcesSnapshot {
 public:
  explicit IOKitPowerSourcesSnapshot(CFRef<CFTypeRef> information)
      : information_(std::move(information)),
        sources_(CFRef<CFArrayRef>::adopt(IOPSCopyPowerSourcesList(information_.get()))) {}

  std::optional<std::size_t> count() override {
    const CFArrayRef sources = asArray(sources_.get());
    if (sources == nullptr) return std::nullopt;
    return static_cast<std::size_t>(CFArrayGetCount(sources));
  }

  std::optional<tidewell::PropertyDictionary> description(std::size_t index) override {
    const CFTypeRef source = CFArrayGetValueAtIndex(sources_.get(), static_cast<CFIndex>(index));
    return propertyDictionary(IOPSGetPowerSourceDescription(information_.get(), source));
  }

 private:
  /// Owns the descriptions, so it stays as long as they are read.
  CFRef<CFTypeRef> information_;
  CFRef<CFArrayRef> sources_;
};

}  // namespace

bool IOKitPowerSources::isLowPowerModeEnabled() {
  @autoreleasepool {
    return NSProcessInfo.processInfo.isLowPowerModeEnabled;
  }
}

std::unique_ptr<tidewell::PowerSourcesSnapshot> IOKitPowerSources::copySnapshot() {
  auto information = CFRef<CFTypeRef>::adopt(IOPSCopyPowerSourcesInfo());
  if (!information) return nullptr;
  return std::make_unique<IOKitPowerSourcesSnapshot>(std::move(information));
}

}  // namespace platform
