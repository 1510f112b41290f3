#include "Staylit/Desktop/Doctor/Examination.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Platform/Linux/Bus/RemoteProperties.h"
#include "Platform/Linux/Log/JournalLog.h"
#include "Platform/Linux/Modules/Modules.h"
#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Linux/Settings/SettingsExamination.h"
#include "Platform/Linux/Settings/SettingsFile.h"
#include "Platform/Linux/Settings/TomlDefaults.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Platform/Linux/Sleep/SleepInhibitors.h"
#include "Platform/Linux/Sleep/SleepServices.h"
#include "Staylit/Desktop/CommandLine.h"
#include "Staylit/Desktop/Display/Display.h"
#include "Staylit/Desktop/Display/WindowsModule.h"
#include "Staylit/Desktop/Session/UserLock.h"
#include "Staylit/Prefs.h"
#include "Staylit/SettingMeaning.h"
#include "Tidewell/ForeignText.h"

namespace staylit {
namespace {

using TrialListing = DoctorFacts::Trial::Listing;
using Tray = DoctorFacts::Tray;
using Windows = DoctorFacts::Windows;
namespace services = platform::services;

constexpr const char* kTrialReason = "staylit --doctor tries a hold";
constexpr const char* kTrayWatcher = "org.kde.StatusNotifierWatcher";
constexpr const char* kPolkit = "org.freedesktop.PolicyKit1";
/// KDE heeds no request that is younger than five seconds.
constexpr std::chrono::seconds kLongestTrial{8};
constexpr tidewell::Seconds kBetweenLooks{0.25};

/// The service that lists what `granter` has.
std::string listerOf(const std::string& granter, const HoldsReport& listed) {
  const bool isKde = std::ranges::any_of(listed.services, [](const std::string& service) {
    return service == services::kPolicyAgent;
  });
  return isKde && granter == services::kPowerManagement ? services::kPolicyAgent : granter;
}

bool isStaylits(const HoldsReport::Hold& hold) {
  return hold.owner == services::kDisplayName || hold.owner == services::kApplicationId;
}

/// How many of the holds at a service may be the one that is tried.
std::ptrdiff_t candidates(const HoldsReport& listed, const std::string& service) {
  return std::ranges::count_if(listed.holds, [&service](const HoldsReport::Hold& hold) {
    return hold.service == service && isStaylits(hold) &&
           (hold.reason.empty() || hold.reason == kTrialReason);
  });
}

bool tellsNoOwners(const HoldsReport& listed, const std::string& service) {
  const bool isSilent = std::ranges::find(listed.silent, service) != listed.silent.end();
  return isSilent || std::ranges::any_of(listed.holds, [&](const HoldsReport::Hold& hold) {
           return hold.service == service && hold.owner.empty();
         });
}

Windows windows() {
  if (platform::moduleFile(kWindowsModule).empty()) return Windows::absent;
  const auto function = platform::loadFromModule(kWindowsModule, kMakeWindowKit);
  if (function.address) return Windows::ready;
  return function.isOfAnotherBuild ? Windows::ofAnotherBuild : Windows::unfit;
}

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value && *value ? tidewell::cleaned(value, 64) : "none";
}

/// The name and version of the system, by its `os-release` file.
std::string systemName() {
  constexpr std::string_view kKey = "PRETTY_NAME=";
  std::ifstream file("/etc/os-release");
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with(kKey)) continue;
    std::string name = line.substr(kKey.size());
    std::erase(name, '"');
    return tidewell::cleaned(name, 64);
  }
  return "unknown";
}

std::string kernelName() {
  utsname name{};
  if (::uname(&name) != 0) return "unknown";
  return tidewell::cleaned(std::string(name.sysname) + " " + name.release + " " + name.machine);
}

std::string systemdVersion(platform::Bus& systemBus) {
  platform::RemoteProperties manager(systemBus, "org.freedesktop.systemd1",
                                     "/org/freedesktop/systemd1",
                                     "org.freedesktop.systemd1.Manager", {"Version"});
  const auto* properties = manager.read();
  if (!properties || !properties->contains("Version")) return "none";
  const auto* version = std::get_if<std::string>(&properties->find("Version")->second);
  return version ? tidewell::cleaned(*version, 64) : "none";
}

void addProblems(DoctorFacts& facts, const std::string& text, const std::string& file) {
  tidewell::PropertyDictionary known = registeredSettings();
  known.merge(registeredHistorySettings());
  known.emplace("history", std::monostate());
  for (const auto& problem : platform::examineSettings(text, known, meaningOfSetting))
    facts.settingsProblems.push_back({problem.line, problem.text, file});
}

}  // namespace

Examination::Examination(platform::EventLoop& loop, platform::Buses& buses, tidewell::Clock& clock,
                         HoldsReader::Places places, std::filesystem::path machineSettings)
    : loop_(loop),
      buses_(buses),
      clock_(clock),
      reader_(buses.system, buses.session, clock, std::move(places)),
      machineSettings_(std::move(machineSettings)) {}

DoctorFacts Examination::run() {
  DoctorFacts facts;
  facts.sleep = reader_.listHolds();
  reader_.addDeciders(facts.sleep);
  facts.isRoot = ::geteuid() == 0;
  facts.hasLogind = isOwned(buses_.system, services::kLogind);
  facts.hasPolkit = hasPolkit();
  tryAHold(facts);
  facts.tray = tray();
  facts.windows = windows();
  facts.seesOthers = ::access("/proc/1/stat", R_OK) == 0;
  facts.hasProcessorClocks = platform::KernelCpuClock().isAvailable();
  lookAtSettings(facts);
  lookForStaylit(facts);
  facts.hasJournal = platform::JournalLog::isListening();
  addParticulars(facts);
  return facts;
}

void Examination::tryAHold(DoctorFacts& facts) {
  constexpr auto kSystem = tidewell::AssertionKind::system;
  const HoldsReport before = reader_.listHolds();
  platform::SleepServices wanted(buses_.system, buses_.session, [](auto*, bool) {});
  platform::SleepInhibitors inhibitors(buses_.system, buses_.session, loop_);
  const auto creation = inhibitors.createAssertion(kSystem, kTrialReason);
  facts.trialError = creation.code;
  std::vector<std::string> granters;
  for (const auto& live : inhibitors.liveAssertions()) {
    for (const auto& grant : live.grants)
      granters.push_back(grant.service);
  }
  for (const platform::InhibitMechanism* mechanism : wanted.row(kSystem).mechanisms) {
    const bool isGranted = std::ranges::find(granters, mechanism->serviceName()) != granters.end();
    facts.trials.push_back({mechanism->serviceName(), listerOf(mechanism->serviceName(), before),
                            isGranted ? TrialListing::notListed : TrialListing::refused});
  }
  const auto isOpen = [](const DoctorFacts::Trial& trial) {
    return trial.listing == TrialListing::notListed;
  };
  const tidewell::Moment end = clock_.now() + kLongestTrial;
  while (std::ranges::any_of(facts.trials, isOpen)) {
    const HoldsReport listed = reader_.listHolds();
    for (DoctorFacts::Trial& trial : facts.trials) {
      if (!isOpen(trial)) continue;
      if (tellsNoOwners(listed, trial.lister)) trial.listing = TrialListing::hasNoList;
      if (candidates(listed, trial.lister) > candidates(before, trial.lister)) {
        trial.listing = TrialListing::listed;
      }
    }
    if (clock_.now() >= end) break;
    if (std::ranges::any_of(facts.trials, isOpen)) clock_.sleepFor(kBetweenLooks);
  }
}

void Examination::lookAtSettings(DoctorFacts& facts) {
  if (const auto path = platform::TomlDefaults::defaultPath(); !path.empty()) {
    const platform::RegularFile file = platform::SettingsFile(path).read();
    facts.settingsError = file.error;
    facts.hasSettingsFile = file.exists;
    if (file.error.empty()) addProblems(facts, file.text, "");
  }
  // The program that serves the machine has a file of its own.
  const platform::RegularFile machines = platform::SettingsFile(machineSettings_).read();
  if (machines.error.empty()) addProblems(facts, machines.text, machineSettings_.string());
}

void Examination::lookForStaylit(DoctorFacts& facts) {
  facts.isRunning = isOwned(buses_.session, services::kApplicationId) ||
                    isOwned(buses_.system, services::kApplicationId);
  const auto holder = UserLock().holder();
  if (!facts.isRunning && holder) {
    facts.outOfReach = outOfReach(*holder, buses_.session.handle() != nullptr);
  }
}

Tray Examination::tray() {
  if (!Display::isKnown()) Display::learnFromServiceManager(buses_.session);
  if (!Display::isKnown()) return Tray::noDisplay;
  if (!isOwned(buses_.session, kTrayWatcher)) return Tray::noWatcher;
  constexpr const char* kHasPanel = "IsStatusNotifierHostRegistered";
  platform::RemoteProperties watcher(buses_.session, kTrayWatcher, "/StatusNotifierWatcher",
                                     kTrayWatcher, {kHasPanel});
  const auto* properties = watcher.read();
  if (!properties || !properties->contains(kHasPanel)) return Tray::ready;
  const auto* hasPanel = std::get_if<bool>(&properties->find(kHasPanel)->second);
  return hasPanel && !*hasPanel ? Tray::noPanel : Tray::ready;
}

/// It may be there only when somebody asks it.
bool Examination::hasPolkit() {
  if (isOwned(buses_.system, kPolkit)) return true;
  const auto reply = buses_.system.call({"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus", "ListActivatableNames"});
  if (!reply || sd_bus_message_enter_container(reply.message.get(), 'a', "s") < 0) return false;
  const char* name = nullptr;
  while (sd_bus_message_read(reply.message.get(), "s", &name) > 0) {
    if (std::string_view(name) == kPolkit) return true;
  }
  return false;
}

bool Examination::isOwned(platform::Bus& bus, const char* name) {
  return bus.nameStatus(name).isOwned();
}

void Examination::addParticulars(DoctorFacts& facts) {
  constexpr std::array<const char*, 7> kOfSession = {
      services::kSessionManager,       services::kPolicyAgent,      services::kPowerManagement,
      services::kScreenSaver,          services::kXfcePowerManager, kTrayWatcher,
      "org.gnome.SettingsDaemon.Power"};
  std::string present = facts.hasLogind ? std::string(services::kLogind) : "";
  for (const char* name : kOfSession) {
    if (isOwned(buses_.session, name)) present += (present.empty() ? "" : " ") + std::string(name);
  }
  facts.particulars = {CommandLine::version(),
                       "system: " + systemName(),
                       "kernel: " + kernelName(),
                       "systemd: " + systemdVersion(buses_.system),
                       "desktop: " + variable("XDG_CURRENT_DESKTOP"),
                       "session: " + variable("XDG_SESSION_TYPE"),
                       "services: " + (present.empty() ? "none" : present),
                       "can suspend: " + std::string(!facts.sleep.canSleep   ? "unknown"
                                                     : *facts.sleep.canSleep ? "yes"
                                                                             : "no")};
  for (const DoctorFacts::Trial& trial : facts.trials) {
    constexpr std::array<const char*, 4> kListings = {"listed", "not listed", "has no list",
                                                      "refused"};
    facts.particulars.push_back("hold at " + trial.service + ": " +
                                kListings[static_cast<std::size_t>(trial.listing)]);
  }
}

}  // namespace staylit
