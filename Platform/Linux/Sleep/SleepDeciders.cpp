#include "Platform/Linux/Sleep/SleepDeciders.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <utility>
#include <variant>

#include "Platform/Linux/Bus/RemoteProperties.h"
#include "Platform/Linux/Files/XdgFolders.h"
#include "Platform/Linux/Sleep/DesktopSetting.h"
#include "Platform/Linux/Sleep/LxqtIdleTime.h"
#include "Platform/Linux/Sleep/LxqtSettings.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

using Action = SleepDecider::Action;
using tidewell::PropertyDictionary;
using tidewell::Seconds;

/// A power manager that keeps its settings where `gsettings` reads them, by the name under which it
/// stands on the session bus.
struct SettingsPowerManager {
  const char* service;
  const char* name;
  const char* schema;
  std::array<const char*, 2> action;   ///< On AC power, on battery.
  std::array<const char*, 2> timeout;  ///< In seconds; 0 is never.
};

constexpr std::array<const char*, 2> kInactiveType = {"sleep-inactive-ac-type",
                                                      "sleep-inactive-battery-type"};
constexpr std::array<const char*, 2> kInactiveTimeout = {"sleep-inactive-ac-timeout",
                                                         "sleep-inactive-battery-timeout"};
constexpr SettingsPowerManager kCinnamon = {
    services::kCinnamonPowerManager, "Cinnamon's power management",
    "org.cinnamon.settings-daemon.plugins.power", kInactiveType, kInactiveTimeout};
constexpr std::array<SettingsPowerManager, 3> kPowerManagers = {
    {{"org.gnome.SettingsDaemon.Power", "GNOME's power management",
      "org.gnome.settings-daemon.plugins.power", kInactiveType, kInactiveTimeout},
     kCinnamon,
     {services::kMatePowerManager,
      "MATE's power management",
      "org.mate.power-manager",
      {"action-sleep-type-ac", "action-sleep-type-battery"},
      {"sleep-computer-ac", "sleep-computer-battery"}}}};

constexpr const char* kOnExternalPower = "OnExternalPower";

template <class Value>
std::optional<Value> property(const PropertyDictionary& properties, std::string_view name) {
  const auto found = properties.find(name);
  if (found == properties.end()) return std::nullopt;
  const auto* value = std::get_if<Value>(&found->second);
  return value ? std::optional(*value) : std::nullopt;
}

bool isSleep(std::string_view action) {
  constexpr std::array<std::string_view, 5> kSleeps = {"suspend", "hibernate", "hybrid-sleep",
                                                       "suspend-then-hibernate", "sleep"};
  return std::ranges::find(kSleeps, action) != kSleeps.end();
}

std::string is(std::string_view setting, std::string_view value) {
  return std::string(setting) + " is \"" + std::string(value) + "\"";
}

SleepDecider logindDecider(const PropertyDictionary& properties) {
  SleepDecider decider{"logind", Action::unknown, std::nullopt, "", {services::kLogind}};
  const auto action = property<std::string>(properties, "IdleAction");
  if (!action) return decider;
  decider.setting = is("IdleAction", tidewell::cleaned(*action));
  decider.action = isSleep(*action) ? Action::sleeps : Action::nothing;
  const auto microseconds = property<std::int64_t>(properties, "IdleActionUSec");
  if (microseconds) decider.after = Seconds(static_cast<double>(*microseconds) / 1e6);
  return decider;
}

bool isOnAC(const PropertyDictionary& properties) {
  return property<bool>(properties, kOnExternalPower).value_or(true);
}

std::string suspendAbility(Bus& systemBus) {
  const BusReply reply = systemBus.call(
      {services::kLogind, services::kLogindPath, services::kLogindManager, "CanSuspend"});
  const char* text = nullptr;
  if (!reply || sd_bus_message_read(reply.message.get(), "s", &text) <= 0) return "";
  return tidewell::cleaned(text);
}

SleepDecider settingsDecider(const SettingsPowerManager& manager, bool isOnAC,
                             const DesktopSettings& settings) {
  SleepDecider decider{
      manager.name, Action::unknown, std::nullopt, "", {services::kSessionManager}};
  const std::size_t source = isOnAC ? 0 : 1;
  const auto seconds = settings.number(manager.schema, manager.timeout[source]);
  if (!seconds) return decider;
  if (*seconds <= 0) {
    decider.action = Action::nothing;
    decider.setting = std::string(manager.timeout[source]) + " is 0";
    return decider;
  }
  const auto action = settings.text(manager.schema, manager.action[source]);
  if (!action) return decider;
  decider.action = isSleep(*action) ? Action::sleeps : Action::nothing;
  decider.after = Seconds(static_cast<double>(*seconds));
  decider.setting = is(manager.action[source], *action);
  return decider;
}

SleepDecider xfceDecider(Bus& sessionBus, bool isOnAC) {
  SleepDecider decider{
      "XFCE's power management", Action::unknown, std::nullopt, "", {services::kPowerManagement}};
  const auto isPresenting = readXfceSetting(sessionBus, "presentation-mode");
  if (isPresenting && *isPresenting != 0) {
    decider.action = Action::nothing;
    decider.setting = "its presentation mode is on";
    return decider;
  }
  const std::string key = isOnAC ? "inactivity-on-ac" : "inactivity-on-battery";
  const auto minutes = readXfceSetting(sessionBus, key);
  if (!minutes) return decider;
  const bool isNever = isNeverForXfce(*minutes);
  decider.action = isNever ? Action::nothing : Action::sleeps;
  decider.setting = key + (isNever ? " is \"never\"" : " is " + std::to_string(*minutes));
  if (!isNever) decider.after = Seconds(60.0 * static_cast<double>(*minutes));
  return decider;
}

SleepDecider kdeDecider() {
  return {"KDE's power management",
          Action::unknown,
          std::nullopt,
          "",
          {services::kPolicyAgent, services::kLogind}};
}

SleepDecider lxqtDecider(Bus& sessionBus, const FindXServer& findXServer, bool isOnAC) {
  const LxqtSettings settings = LxqtSettings::read(xdgConfigFolders());
  SleepDecider decider{
      "LXQt's idleness watcher", Action::nothing, std::nullopt, settings.setting(isOnAC), {}};
  decider.isKeptOff = canKeepOffLxqt(sessionBus, findXServer);
  if (settings.deed(isOnAC) != LxqtSettings::Deed::endsWork) return decider;
  decider.action = Action::sleeps;
  decider.after = settings.after(isOnAC);
  return decider;
}

}  // namespace

SleepDecider findCinnamonDecider(Bus& systemBus, const DesktopSettings& settings) {
  RemoteProperties logind(systemBus, services::kLogind, services::kLogindPath,
                          services::kLogindManager, {kOnExternalPower});
  const PropertyDictionary* properties = logind.read();
  return settingsDecider(kCinnamon, properties == nullptr || isOnAC(*properties), settings);
}

MachineSleep findSleepDeciders(Bus& systemBus, Bus& sessionBus, tidewell::TaskLauncher& launcher,
                               const FindXServer& findXServer, const std::string& settingsTool) {
  MachineSleep machine;
  bool isMachineOnAC = true;
  RemoteProperties logind(systemBus, services::kLogind, services::kLogindPath,
                          services::kLogindManager,
                          {"IdleAction", "IdleActionUSec", kOnExternalPower});
  if (const PropertyDictionary* properties = logind.read()) {
    machine.hasLogind = true;
    machine.canSuspend = suspendAbility(systemBus);
    machine.deciders.push_back(logindDecider(*properties));
    isMachineOnAC = isOnAC(*properties);
  }
  const auto isThere = [&sessionBus](const char* name) {
    return sessionBus.nameStatus(name).isOwned();
  };
  const DesktopSettings settings(launcher, settingsTool);
  const std::size_t ofMachine = machine.deciders.size();
  for (const SettingsPowerManager& manager : kPowerManagers) {
    if (!isThere(manager.service)) continue;
    machine.deciders.push_back(settingsDecider(manager, isMachineOnAC, settings));
  }
  if (isThere(services::kSolid)) machine.deciders.push_back(kdeDecider());
  if (isThere(services::kXfcePowerManager))
    machine.deciders.push_back(xfceDecider(sessionBus, isMachineOnAC));
  if (isThere(services::kLxqtPowerManager))
    machine.deciders.push_back(lxqtDecider(sessionBus, findXServer, isMachineOnAC));
  if (machine.deciders.size() == ofMachine && isThere(services::kSessionManager)) {
    machine.deciders.push_back({"the desktop's power management",
                                Action::unknown,
                                std::nullopt,
                                "",
                                {services::kSessionManager}});
  } else if (machine.deciders.size() == ofMachine && isThere(services::kPowerManagement)) {
    machine.deciders.push_back({"the desktop's power management",
                                Action::unknown,
                                std::nullopt,
                                "",
                                {services::kPowerManagement}});
  }
  return machine;
}

}  // namespace platform
