#include <IOKit/pwr_mgt/IOPMLib.h>
#include <unistd.h>

#include <cstddef>
#include <string>
#include <utility>

#include "Tests/Platform/MacOS/Stubs/Ledger.h"
#include "Tests/Platform/MacOS/Stubs/PowerService.h"

namespace platform::stub {
namespace {

constexpr std::size_t kLongestAssertionName = 128;

/// The text of a string that a caller gave; null where the system would refuse it.
const std::u16string* acceptable(CFTypeRef string, const char* function) {
  if (string == nullptr) return nullptr;
  const auto* const text = Ledger::shared().use<std::u16string>(string, function);
  return text != nullptr && text->size() <= kLongestAssertionName ? text : nullptr;
}

Value listOfAllProcesses(const PowerService& service) {
  Dictionary processes;
  List own;
  for (const auto& [identifier, assertion] : service.held)
    own.push_back(PowerService::listed(assertion));
  if (!own.empty()) processes.emplace_back(std::int64_t{getpid()}, std::move(own));
  for (const auto& [process, assertions] : service.others)
    processes.emplace_back(process, assertions);
  return processes;
}

}  // namespace

PowerService& PowerService::shared() {
  static PowerService service;
  return service;
}

Value PowerService::listed(const Assertion& assertion) {
  return Dictionary{{u"AssertType", assertion.type},
                    {u"AssertLevel", std::int64_t{assertion.level}},
                    {u"AssertName", assertion.name},
                    {u"AssertStartWhen", Opaque()}};
}

}  // namespace platform::stub

using platform::stub::Ledger;
using platform::stub::PowerService;

extern "C" {

IOReturn IOPMAssertionCreateWithName(CFStringRef type, IOPMAssertionLevel level, CFStringRef name,
                                     IOPMAssertionID* identifier) {
  constexpr const char* kFunction = "IOPMAssertionCreateWithName";
  PowerService& service = PowerService::shared();
  const std::u16string* const kind = platform::stub::acceptable(type, kFunction);
  const std::u16string* const reason = platform::stub::acceptable(name, kFunction);
  if (kind == nullptr || reason == nullptr) return kIOReturnBadArgument;
  if (service.creating != kIOReturnSuccess) return service.creating;
  static IOPMAssertionID last = 40'000;
  *identifier = ++last;
  service.held[last] = {*kind, level, *reason};
  return kIOReturnSuccess;
}

IOReturn IOPMAssertionSetProperty(IOPMAssertionID identifier, CFStringRef key, CFTypeRef value) {
  constexpr const char* kFunction = "IOPMAssertionSetProperty";
  PowerService& service = PowerService::shared();
  const auto found = service.held.find(identifier);
  const auto* const property = Ledger::shared().use<std::u16string>(key, kFunction);
  if (found == service.held.end()) {
    Ledger::shared().complain(std::string(kFunction) + ": no such assertion");
    return kIOReturnNotFound;
  }
  const std::u16string* const name = platform::stub::acceptable(value, kFunction);
  if (property == nullptr || *property != u"AssertName" || name == nullptr)
    return kIOReturnBadArgument;
  if (service.renaming == kIOReturnSuccess) found->second.name = *name;
  return service.renaming;
}

IOReturn IOPMAssertionRelease(IOPMAssertionID identifier) {
  if (PowerService::shared().held.erase(identifier) == 1) return kIOReturnSuccess;
  Ledger::shared().complain("IOPMAssertionRelease: no such assertion");
  return kIOReturnNotFound;
}

IOReturn IOPMCopyAssertionsByProcess(CFDictionaryRef* answer) {
  PowerService& service = PowerService::shared();
  if (service.givesNoList) return service.listing;
  Ledger& ledger = Ledger::shared();
  *answer = static_cast<CFDictionaryRef>(ledger.handOver(
      ledger.make(service.answer ? *service.answer : platform::stub::listOfAllProcesses(service),
                  "IOPMCopyAssertionsByProcess")));
  return service.listing;
}
}
