#include <IOKit/ps/IOPowerSources.h>

#include <algorithm>
#include <cstddef>
#include <optional>

#include "Tests/Platform/MacOS/Stubs/Ledger.h"
#include "Tests/Platform/MacOS/Stubs/PowerService.h"

using platform::stub::Ledger;
using platform::stub::Object;
using platform::stub::Opaque;
using platform::stub::PowerService;
using platform::stub::Value;

extern "C" {

/// What is known at one moment: the sources, and what each says of itself.
CFTypeRef IOPSCopyPowerSourcesInfo() {
  constexpr const char* kFunction = "IOPSCopyPowerSourcesInfo";
  const PowerService& service = PowerService::shared();
  if (!service.knowsOfSources) return nullptr;
  Ledger& ledger = Ledger::shared();
  Object::Pairs sources;
  for (const std::optional<Value>& description : service.sources) {
    sources.keys.push_back(ledger.make(Value(Opaque()), kFunction));
    sources.values.push_back(ledger.make(description.value_or(Opaque()), kFunction));
  }
  return ledger.handOver(ledger.make(Object::Content(sources), kFunction));
}

CFArrayRef IOPSCopyPowerSourcesList(CFTypeRef information) {
  constexpr const char* kFunction = "IOPSCopyPowerSourcesList";
  Ledger& ledger = Ledger::shared();
  const auto* const sources = ledger.use<Object::Pairs>(information, kFunction);
  if (sources == nullptr || !PowerService::shared().listsSources) return nullptr;
  return static_cast<CFArrayRef>(
      ledger.handOver(ledger.make(Object::Content(sources->keys), kFunction)));
}

CFDictionaryRef IOPSGetPowerSourceDescription(CFTypeRef information, CFTypeRef source) {
  constexpr const char* kFunction = "IOPSGetPowerSourceDescription";
  Ledger& ledger = Ledger::shared();
  PowerService& service = PowerService::shared();
  const auto* const sources = ledger.use<Object::Pairs>(information, kFunction);
  const Object* const asked = ledger.use(source, kFunction);
  if (sources == nullptr || asked == nullptr) return nullptr;
  ++service.descriptions;
  const auto found = std::ranges::find(sources->keys, asked);
  if (found == sources->keys.end()) {
    ledger.complain("IOPSGetPowerSourceDescription: a source of another time");
    return nullptr;
  }
  const auto index = static_cast<std::size_t>(found - sources->keys.begin());
  if (!service.sources.at(index)) return nullptr;
  return static_cast<CFDictionaryRef>(static_cast<CFTypeRef>(sources->values[index]));
}
}
