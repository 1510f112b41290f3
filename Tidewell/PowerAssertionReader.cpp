#include "Tidewell/PowerAssertionReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string_view>
#include <variant>

#include "Tidewell/Ports/Ports.h"

namespace tidewell {
namespace {

constexpr std::array<std::string_view, 3> kBlockingTypes = {
    "PreventUserIdleSystemSleep", "NoIdleSleepAssertion", "PreventSystemSleep"};

bool isBlocking(const PropertyDictionary& assertion) {
  const auto type = assertion.find("AssertType");
  if (type == assertion.end()) return false;
  const auto* name = std::get_if<std::string>(&type->second);
  return name && std::ranges::find(kBlockingTypes, *name) != kBlockingTypes.end();
}

/// A missing or odd level counts as on: rather honour a program's wish to stay awake.
bool isSwitchedOff(const PropertyDictionary& assertion) {
  const auto level = assertion.find("AssertLevel");
  if (level == assertion.end()) return false;
  const auto* number = std::get_if<std::int64_t>(&level->second);
  return number && *number == 0;
}

bool preventsSleep(const std::vector<PropertyDictionary>& assertions) {
  return std::ranges::any_of(assertions, [](const PropertyDictionary& assertion) {
    return isBlocking(assertion) && !isSwitchedOff(assertion);
  });
}

std::string nameOf(std::int32_t pid, RunningApplications& applications) {
  if (const auto application = applications.withProcessIdentifier(pid)) {
    if (auto identifier = application->bundleIdentifier()) return *identifier;
    if (auto name = application->localizedName()) return *name;
  }
  return "pid " + std::to_string(pid);
}

}  // namespace

std::vector<std::string> PowerAssertionReader::appsPreventingSleep() {
  Ports& ports = InstalledPorts::current();
  const auto holders = ports.assertionTable->assertionsByProcess();
  if (!holders) return {};
  const std::int32_t own = ports.assertionTable->ownProcessIdentifier();
  std::set<std::string> names;
  for (const auto& [number, assertions] : *holders) {
    const auto pid = static_cast<std::int32_t>(number);
    if (pid == own || !preventsSleep(assertions)) continue;
    names.insert(nameOf(pid, *ports.runningApplications));
  }
  return {names.begin(), names.end()};
}

}  // namespace tidewell
