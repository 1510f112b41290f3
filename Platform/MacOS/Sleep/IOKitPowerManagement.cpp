#include "Platform/MacOS/Sleep/IOKitPowerManagement.h"

#include <IOKit/pwr_mgt/IOPMLib.h>

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
  return creation;
}

void IOKitPowerManagement::setAssertionName(std::uint32_t id, const std::string& name) {
  IOPMAssertionSetProperty(id, kIOPMAssertionNameKey, assertionName(name).get());
}

void IOKitPowerManagement::releaseAssertion(std::uint32_t id) {
  IOPMAssertionRelease(id);
}

}  // namespace platform
