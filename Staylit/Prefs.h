#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Staylit/Published.h"
#include "Tidewell/BatteryMonitor.h"
#include "Tidewell/Ports/Defaults.h"
#include "Tidewell/Ports/PropertyValue.h"
#include "Tidewell/Thresholds.h"

namespace staylit {

/// The keys of all settings. Their types and defaults stand in Prefs.cpp.
namespace keys {
inline constexpr std::string_view graceSeconds = "graceSeconds";
inline constexpr std::string_view batteryThreshold = "batteryThreshold";
inline constexpr std::string_view respectLowPower = "respectLowPower";
inline constexpr std::string_view allowLidClosed = "allowLidClosed";
inline constexpr std::string_view keepScreenOn = "keepScreenOn";
inline constexpr std::string_view ignoredApps = "ignoredApps";
inline constexpr std::string_view cpuThresholdPercent = "cpuThresholdPercent";
inline constexpr std::string_view diskThresholdKBps = "diskThresholdKBps";
inline constexpr std::string_view netThresholdKBps = "netThresholdKBps";
inline constexpr std::string_view sustainSeconds = "sustainSeconds";
inline constexpr std::string_view honorAppAssertions = "honorAppAssertions";
inline constexpr std::string_view launchAtLogin = "launchAtLogin";
inline constexpr std::string_view verbose = "verbose";

/// Not a setting of what the program does: whether the history is kept. It stands in a table of its
/// own where the store has tables.
inline constexpr std::string_view historyEnabled = "history.enabled";
/// Beside it: whether the last day is kept so that it can be replayed.
inline constexpr std::string_view historyRing = "history.ring";
}  // namespace keys

/// The hold goes on for a time within these limits after the work, whatever value is stored.
inline constexpr std::int64_t kShortestGraceSeconds = 30;
inline constexpr std::int64_t kLongestGraceSeconds = 600;

/// Every setting with its default, without those of the history.
[[nodiscard]] tidewell::PropertyDictionary registeredSettings();

/// The settings of the history with their defaults; who keeps a history registers them.
[[nodiscard]] tidewell::PropertyDictionary registeredHistorySettings();

/// The one access point to the user's settings. Every value is read from the store afresh, so that
/// a change counts at the next tick. Main thread only.
class Prefs {
 public:
  /// The only instance, on the installed ports. The first use makes it and registers the defaults.
  static Prefs& shared();

  Prefs(const Prefs&) = delete;
  Prefs& operator=(const Prefs&) = delete;

  [[nodiscard]] tidewell::ActivityThresholds activityThresholds();
  [[nodiscard]] tidewell::PowerPolicy powerPolicy();

  /// The keys of the applications that the user ignores; stored in the order of their code points.
  [[nodiscard]] tidewell::TextSet ignoredApps();
  void setIgnoredApps(const tidewell::TextSet& ignored);
  /// How often `setIgnoredApps` was called. Observers are told when the new set is stored already.
  [[nodiscard]] Published<std::int64_t>& ignoredAppsChanges() { return ignoredAppsChanges_; }

  /// The store itself, for settings that only one place reads.
  [[nodiscard]] tidewell::Defaults& defaults() { return defaults_; }

 private:
  explicit Prefs(tidewell::Defaults& defaults);

  tidewell::Defaults& defaults_;
  Published<std::int64_t> ignoredAppsChanges_{0};
};

}  // namespace staylit
