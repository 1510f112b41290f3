#include "Platform/MacOS/Sleep/IOKitPowerManagement.h"

#include <IOKit/pwr_mgt/IOPMLib.h>

#include <optional>

#include "Platform/MacOS/CoreFoundation/CFRef.h"
#include "Platform/MacOS/CoreFoundation/CFText.h"
#include "Platform/MacOS/Sleep/AssertionTypes.h"

namespace platform {
namespace {

constexpr CFIndex kLongestName = 128;

CFRef<CFStringRef> assertionName(const std::string& name) {
  CFRef<CFStringRef> whole = makeCFString(name);
  if (CFStringGetLength(whole.get()) <= kLongestName) return whole;
  const CFIndex end =
      CFStringGetRangeOfComposedCharactersAtIndex(whole.get(), kLongestName).location;
  return CFRef<CFStringRef>::adopt(
      CFStringCreateWithSubstring(kCFAllocatorDefault, whole.get(), CFRangeMake(0, end)));
}

}  // namespace

tidewell::PowerManagement::Creation IOKitPowerManagement::createAssertion(
    tidewell::AssertionKind kind, const std::string& name) {
  Creation creation;
  creation.code =
      IOPMAssertionCreateWithName(makeCFString(assertionType(kind)).get(), kAssertionLevelOn,
                                  assertionName(name).get(), &creation.id);
  if (creation.code == 0) live_[creation.id] = {kind, name};
  return creation;
}

void IOKitPowerManagement::setAssertionName(std::uint32_t id, const std::string& name) {
  IOPMAssertionSetProperty(id, kIOPMAssertionNameKey, assertionName(name).get());
  if (const auto found = live_.find(id); found != live_.end()) found->second.name = name;
}

void IOKitPowerManagement::releaseAssertion(std::uint32_t id) {
  IOPMAssertionRelease(id);
  live_.erase(id);
}

std::vector<IOKitPowerManagement::LiveAssertion> IOKitPowerManagement::liveAssertions() {
  std::vector<LiveAssertion> live;
  for (const auto& [id, assertion] : live_)
    live.push_back({assertion.kind, assertion.name, {{"powerd", std::nullopt}}});
  return live;
}

}  // namespace platform
