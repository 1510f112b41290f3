#include "Platform/MacOS/Power/IOKitPowerSources.h"

#include <IOKit/ps/IOPowerSources.h>

#include <cstddef>
#include <utility>

#include "Platform/MacOS/CoreFoundation/CFCast.h"
#include "Platform/MacOS/CoreFoundation/CFProperties.h"
#include "Platform/MacOS/CoreFoundation/CFRef.h"
#include "Platform/MacOS/Power/LowPowerMode.h"
#include "Platform/MacOS/Power/PowerSourceDescription.h"

namespace platform {
namespace {

class IOKitSnapshot final : public PowerSourcesSnapshot {
 public:
  explicit IOKitSnapshot(CFRef<CFTypeRef> information)
      : information_(std::move(information)),
        list_(CFRef<CFArrayRef>::adopt(IOPSCopyPowerSourcesList(information_.get()))) {}

  std::optional<std::size_t> count() override {
    const CFArrayRef sources = asArray(list_.get());
    if (sources == nullptr) return std::nullopt;
    return static_cast<std::size_t>(CFArrayGetCount(sources));
  }

  std::optional<tidewell::PropertyDictionary> description(std::size_t index) override {
    const CFTypeRef source = CFArrayGetValueAtIndex(list_.get(), static_cast<CFIndex>(index));
    return propertyDictionary(IOPSGetPowerSourceDescription(information_.get(), source));
  }

 private:
  CFRef<CFTypeRef> information_;  ///< Owns the descriptions.
  CFRef<CFArrayRef> list_;
};

}  // namespace

bool IOKitPowerSources::isLowPowerModeEnabled() {
  return platform::isLowPowerModeEnabled();
}

std::optional<tidewell::PowerSource> IOKitPowerSources::source() {
  auto information = CFRef<CFTypeRef>::adopt(IOPSCopyPowerSourcesInfo());
  if (!information) return firstPowerSource(nullptr);
  IOKitSnapshot snapshot(std::move(information));
  return firstPowerSource(&snapshot);
}

}  // namespace platform
