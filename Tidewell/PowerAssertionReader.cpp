#include "Tidewell/PowerAssertionReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string_view>

#include "Tidewell/Ports/AssertionTable.h"
#include "Tidewell/Ports/Ports.h"

namespace tidewell {
namespace {

constexpr std::array<std::string_view, 3> kBlockingTypes = {
    "PreventUserIdleSystemSleep", "NoIdleSleepAssertion", "PreventSystemSleep"};

bool preventsSleep(const ListedAssertion& assertion) {
  // A level that is not told counts as on: rather honour a program's wish to stay awake.
  return std::ranges::find(kBlockingTypes, assertion.type) != kBlockingTypes.end() &&
         assertion.level != 0;
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
  for (const auto& [process, assertions] : *holders) {
    const auto pid = static_cast<std::int32_t>(process);
    if (pid == own || std::ranges::none_of(assertions, preventsSleep)) continue;
    names.insert(nameOf(pid, *ports.runningApplications));
  }
  return {names.begin(), names.end()};
}

}  // namespace tidewell
