#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/DesktopSetting.h"
#include "Platform/Linux/Sleep/XServer.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// Somebody who puts the machine to sleep when nobody uses it, and what it is set to now. A value.
struct SleepDecider {
  enum class Action { nothing, sleeps, unknown };

  std::string name;  ///< For people: "logind", "GNOME's power management".
  Action action = Action::unknown;
  /// How long nobody must use the machine; absent where that cannot be told.
  std::optional<tidewell::Seconds> after;
  /// What says so, for people: `IdleAction is "ignore"`.
  std::string setting;
  /// The services whose lists it heeds, by their names on the bus.
  std::vector<std::string> heeds;
  /// Whether Staylit keeps it off during a hold without a service, see `keepOffLxqt`.
  bool isKeptOff = false;
};

/// The machine's own say in sleep.
struct MachineSleep {
  /// Whether logind can be asked.
  bool hasLogind = false;
  /// What logind says of suspending: "yes", "na" where the machine cannot, and the like; empty when
  /// it does not say.
  std::string canSuspend;
  std::vector<SleepDecider> deciders;
};

/// Finds out who puts the machine to sleep here, on the buses and by the desktop's settings tool
/// where there is one, and by the X server. Some bounded calls; the tool gets two seconds for each
/// of two questions. Main thread only.
MachineSleep findSleepDeciders(Bus& systemBus, Bus& sessionBus, tidewell::TaskLauncher& launcher,
                               const FindXServer& findXServer,
                               const std::string& settingsTool = kSettingsTool);

/// What Cinnamon's power management does with the present source of power, by its settings alone. A
/// bounded call and two tasks of two seconds at most; one, where the first does not tell. Main
/// thread only.
SleepDecider findCinnamonDecider(Bus& systemBus, const DesktopSettings& settings);

}  // namespace platform
