#include "Platform/MacOS/Sleep/IOKitAssertionTable.h"

#include <IOKit/pwr_mgt/IOPMLib.h>
#include <unistd.h>

#include <cstddef>

#include "Platform/MacOS/CoreFoundation/CFCast.h"
#include "Platform/MacOS/CoreFoundation/CFProperties.h"
#include "Platform/MacOS/CoreFoundation/CFRef.h"
#include "Platform/MacOS/Processes/ProgramPath.h"
#include "Platform/MacOS/Processes/StaylitProcess.h"
#include "Platform/MacOS/Sleep/AssertionDescription.h"
#include "Platform/MacOS/Sleep/LitDisplay.h"

namespace platform {
namespace {

std::optional<std::int64_t> processNumber(CFTypeRef key) {
  const CFNumberRef number = asNumber(key);
  if (number == nullptr) return std::nullopt;
  std::int64_t value = 0;
  CFNumberGetValue(number, kCFNumberSInt64Type, &value);
  return value;
}

std::optional<std::vector<tidewell::ListedAssertion>> assertionList(CFTypeRef object) {
  const CFArrayRef list = asArray(object);
  if (list == nullptr) return std::nullopt;
  std::vector<tidewell::ListedAssertion> assertions;
  for (CFIndex index = 0; index < CFArrayGetCount(list); ++index) {
    const auto description = propertyDictionary(CFArrayGetValueAtIndex(list, index));
    if (!description) return std::nullopt;
    assertions.push_back(listedAssertion(*description));
  }
  return assertions;
}

CFRef<CFDictionaryRef> copyAssertionsByProcess() {
  CFDictionaryRef answer = nullptr;
  const IOReturn status = IOPMCopyAssertionsByProcess(&answer);
  auto owned = CFRef<CFDictionaryRef>::adopt(answer);
  return status == kIOReturnSuccess ? std::move(owned) : CFRef<CFDictionaryRef>();
}

}  // namespace

std::optional<std::vector<tidewell::AssertionHolder>> IOKitAssertionTable::assertionsByProcess() {
  const CFRef<CFDictionaryRef> answer = copyAssertionsByProcess();
  const CFDictionaryRef table = asDictionary(answer.get());
  if (table == nullptr) return std::nullopt;
  const auto count = static_cast<std::size_t>(CFDictionaryGetCount(table));
  std::vector<const void*> keys(count);
  std::vector<const void*> values(count);
  CFDictionaryGetKeysAndValues(table, keys.data(), values.data());
  std::vector<tidewell::AssertionHolder> holders;
  for (std::size_t index = 0; index < count; ++index) {
    const auto number = processNumber(keys[index]);
    auto assertions = assertionList(values[index]);
    if (!number || !assertions) return std::nullopt;
    const auto pid = static_cast<std::int32_t>(*number);
    if (pid != getpid() && isAStaylit(pid)) continue;
    const auto owner = [pid] { return programPath(pid); };
    holders.push_back({*number, withoutLitDisplay(*std::move(assertions), owner)});
  }
  return holders;
}

std::int32_t IOKitAssertionTable::ownProcessIdentifier() {
  return getpid();
}

}  // namespace platform
