#include "Staylit/Prefs.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

#include "Tidewell/Ports/Ports.h"

namespace staylit {

tidewell::PropertyDictionary registeredSettings() {
  using Integer = std::int64_t;
  tidewell::PropertyDictionary defaults;
  const auto add = [&defaults](std::string_view key, tidewell::PropertyValue value) {
    defaults.insert_or_assign(std::string(key), std::move(value));
  };
  add(keys::graceSeconds, Integer{120});
  add(keys::batteryThreshold, Integer{20});
  add(keys::respectLowPower, true);
  add(keys::allowLidClosed, false);
  add(keys::keepScreenOn, false);
  add(keys::ignoredApps, std::vector<std::string>());
  add(keys::cpuThresholdPercent, 15.0);
  add(keys::diskThresholdKBps, 500.0);
  add(keys::netThresholdKBps, 100.0);
  add(keys::sustainSeconds, Integer{10});
  add(keys::honorAppAssertions, true);
  add(keys::launchAtLogin, false);
  add(keys::verbose, false);
  return defaults;
}

tidewell::PropertyDictionary registeredHistorySettings() {
  return {{std::string(keys::historyEnabled), true}, {std::string(keys::historyRing), false}};
}

Prefs& Prefs::shared() {
  static std::mutex mutex;
  static std::unique_ptr<Prefs> only;
  static std::uint64_t generation = 0;  // Of the ports whose store `only` reads.
  const std::lock_guard lock(mutex);
  if (!only || generation != tidewell::InstalledPorts::generation()) {
    only.reset(new Prefs(*tidewell::InstalledPorts::current().defaults));
    generation = tidewell::InstalledPorts::generation();
  }
  return *only;
}

Prefs::Prefs(tidewell::Defaults& defaults) : defaults_(defaults) {
  defaults_.registerDefaults(registeredSettings());
}

tidewell::ActivityThresholds Prefs::activityThresholds() {
  return {defaults_.real(keys::cpuThresholdPercent),
          defaults_.real(keys::diskThresholdKBps),
          defaults_.real(keys::netThresholdKBps),
          std::max<std::int64_t>(1, defaults_.integer(keys::sustainSeconds)),
          ignoredApps(),
          defaults_.boolean(keys::honorAppAssertions)};
}

tidewell::PowerPolicy Prefs::powerPolicy() {
  return {defaults_.integer(keys::batteryThreshold), defaults_.boolean(keys::respectLowPower),
          defaults_.boolean(keys::keepScreenOn)};
}

tidewell::TextSet Prefs::ignoredApps() {
  const auto list = defaults_.stringList(keys::ignoredApps);
  return list ? tidewell::TextSet(list->begin(), list->end()) : tidewell::TextSet();
}

void Prefs::setIgnoredApps(const tidewell::TextSet& ignored) {
  // The bytes of UTF-8 have the same order as the code points.
  std::vector<std::string> list(ignored.begin(), ignored.end());
  std::ranges::sort(list);
  defaults_.setStringList(keys::ignoredApps, list);
  ignoredAppsChanges_.set(ignoredAppsChanges_.get() + 1);
}

}  // namespace staylit
