#include "Staylit/Desktop/Holds/HoldsReader.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "Platform/Linux/Proc/CpuClock.h"
#include "Platform/Linux/Proc/ProcFileSystem.h"
#include "Platform/Linux/Proc/ProcessActivity.h"
#include "Platform/Linux/Sleep/LidHandler.h"
#include "Platform/Linux/Sleep/ListedInhibitor.h"
#include "Platform/Linux/Sleep/LogindHoldTimes.h"
#include "Platform/Linux/Sleep/LogindList.h"
#include "Platform/Linux/Sleep/PolicyAgentList.h"
#include "Platform/Linux/Sleep/PowerManagementList.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Platform/Linux/Sleep/SessionManagerList.h"
#include "Platform/Linux/Sleep/SleepDeciders.h"
#include "Platform/Linux/Sleep/StaylitHolds.h"
#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"
#include "Staylit/Desktop/Session/ApplicationService.h"
#include "Staylit/Desktop/Status/StatusMessages.h"
#include "Staylit/StatusReport.h"
#include "Staylit/StatusTexts.h"
#include "Staylit/TimeTexts.h"
#include "Tidewell/ForeignText.h"

namespace staylit {
namespace {

using platform::ListedInhibitor;
using Activity = HoldsReport::Activity;
using Effect = HoldsReport::Effect;
using Listing = std::optional<std::vector<ListedInhibitor>>;
namespace services = platform::services;

/// As long as between two ticks.
constexpr tidewell::Seconds kWatching{2};

bool hasType(const ListedInhibitor& inhibitor, const char* type) {
  return std::ranges::find(inhibitor.types, type) != inhibitor.types.end();
}

/// Absent for what keeps nobody awake.
std::optional<Effect> effectOf(const ListedInhibitor& inhibitor) {
  if (inhibitor.level == 0) return std::nullopt;
  if (hasType(inhibitor, "PreventSystemSleep")) return Effect::everySleep;
  if (hasType(inhibitor, "PreventUserIdleSystemSleep")) return Effect::idleSleep;
  if (hasType(inhibitor, "PreventUserIdleDisplaySleep")) return Effect::idleness;
  // A desktop that takes the lid acts on the lid itself.
  const bool isOnLid = platform::namesLock(inhibitor.locks, services::kLidLock);
  if (isOnLid && !platform::lidHandler(inhibitor)) return Effect::lidSleep;
  return std::nullopt;
}

std::string userName(std::uint32_t user) {
  std::array<char, 16384> buffer{};
  passwd entry{};
  passwd* found = nullptr;
  ::getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found);
  return found ? tidewell::cleaned(found->pw_name) : "user " + std::to_string(user);
}

std::optional<HoldsReport::Hold> holdOf(const char* service, const ListedInhibitor& inhibitor) {
  const auto effect = effectOf(inhibitor);
  if (!effect) return std::nullopt;
  HoldsReport::Hold hold;
  hold.service = service;
  hold.owner = inhibitor.holder;
  hold.reason = inhibitor.why;
  hold.effect = *effect;
  if (inhibitor.user) hold.user = userName(*inhibitor.user);
  if (inhibitor.processIdentifier > 0) hold.processIdentifier = inhibitor.processIdentifier;
  if (platform::mayBePassedOn(inhibitor)) hold.activity.state = Activity::State::passesOn;
  return hold;
}

Activity activityOf(const platform::ProcessActivity::Doing& doing) {
  if (doing.isGone) return {Activity::State::gone, 0, std::nullopt};
  if (!doing.cpuPercent) return {};
  if (doing.isQuiet) return {Activity::State::quiet, 0, doing.quietFor};
  return {Activity::State::active, *doing.cpuPercent, std::nullopt};
}

std::optional<std::int32_t> processOf(const HoldsReport::Hold& hold) {
  constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
  if (!hold.processIdentifier || *hold.processIdentifier > kLargest) return std::nullopt;
  return static_cast<std::int32_t>(*hold.processIdentifier);
}

/// What Staylit sees of the owner's application, which it knows by the same text or by its program.
std::string seenOf(const HoldsReport::Hold& hold, const StatusReport& status) {
  for (const auto* apps : {&status.busy, &status.candidates}) {
    for (const tidewell::BusyApp& app : *apps) {
      if (app.id != hold.owner && app.id != hold.program) continue;
      return rowOf(app) + ", for " + lengthOfTime(tidewell::Seconds(app.busyFor));
    }
  }
  return "";
}

HoldsReport::Decider deciderOf(const platform::SleepDecider& decider) {
  using Action = HoldsReport::Decider::Action;
  using Found = platform::SleepDecider::Action;
  const Action action = decider.action == Found::nothing  ? Action::nothing
                        : decider.action == Found::sleeps ? Action::sleeps
                                                          : Action::unknown;
  return {decider.name, action, decider.after, decider.setting, decider.heeds, decider.isKeptOff};
}

}  // namespace

HoldsReader::HoldsReader(platform::Bus& systemBus, platform::Bus& sessionBus,
                         tidewell::Clock& clock, Places places)
    : systemBus_(systemBus), sessionBus_(sessionBus), clock_(clock), places_(std::move(places)) {}

HoldsReport HoldsReader::read() {
  HoldsReport report = listHolds();
  addDeciders(report);
  lookAtOwners(report);
  if (!report.holds.empty()) askStaylit(report);
  return report;
}

HoldsReport HoldsReader::listHolds() {
  HoldsReport report;
  addLogind(report);
  addSession(report);
  return report;
}

void HoldsReader::addLogind(HoldsReport& report) {
  if (!systemBus_.nameStatus(services::kLogind).isOwned()) return;
  report.services.emplace_back(services::kLogind);
  const Listing listing = platform::listLogindInhibitors(systemBus_);
  if (!listing) return report.silent.emplace_back(services::kLogind), void();
  platform::LogindHoldTimes times(places_.logindHolds);
  for (const ListedInhibitor& inhibitor : *listing) {
    auto hold = holdOf(services::kLogind, inhibitor);
    if (!hold) continue;
    hold->since = times.take(inhibitor);
    report.holds.push_back(std::move(*hold));
  }
}

void HoldsReader::addSession(HoldsReport& report) {
  const Listing logind = platform::listLogindInhibitors(systemBus_);
  const auto add = [&](const char* service, const Listing& listing) {
    report.services.emplace_back(service);
    if (!listing) return report.silent.emplace_back(service), void();
    for (const ListedInhibitor& inhibitor : *listing) {
      // KDE's policy agent lists some of logind's once more.
      if (logind && platform::lists(*logind, inhibitor)) continue;
      if (auto hold = holdOf(service, inhibitor)) report.holds.push_back(std::move(*hold));
    }
  };
  const auto isThere = [this](const char* name) { return sessionBus_.nameStatus(name).isOwned(); };
  if (isThere(services::kSessionManager)) {
    using platform::SessionManagerList;
    SessionManagerList inhibitors(sessionBus_, SessionManagerList::Extent::wholly);
    add(services::kSessionManager, inhibitors.list());
  }
  if (isThere(services::kPolicyAgent)) {
    add(services::kPolicyAgent, platform::listPolicyAgentInhibitors(sessionBus_));
  } else if (isThere(services::kPowerManagement)) {
    add(services::kPowerManagement, platform::listPowerManagementInhibitors(sessionBus_));
  }
}

void HoldsReader::addDeciders(HoldsReport& report) {
  platform::SpawnedTaskLauncher launcher([](int) { return std::string(); });
  const platform::MachineSleep machine = platform::findSleepDeciders(
      systemBus_, sessionBus_, launcher, platform::XAddress::ofEnvironment, places_.settingsTool);
  std::ranges::transform(machine.deciders, std::back_inserter(report.deciders), deciderOf);
  if (!machine.canSuspend.empty()) report.canSleep = machine.canSuspend != "na";
}

/// Processes may have other numbers where the bus counts, as outside of a container.
bool HoldsReader::countsProcessesAlike() {
  const char* ownName = nullptr;
  if (systemBus_.connect() < 0 || sd_bus_get_unique_name(systemBus_.handle(), &ownName) < 0) {
    return false;
  }
  const auto reply = systemBus_.call(
      {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
       "GetConnectionUnixProcessID"},
      [ownName](sd_bus_message* call) { return sd_bus_message_append(call, "s", ownName); });
  std::uint32_t process = 0;
  return reply && sd_bus_message_read(reply.message.get(), "u", &process) > 0 &&
         process == static_cast<std::uint32_t>(::getpid());
}

void HoldsReader::lookAtOwners(HoldsReport& report) {
  const bool isAnyTold = std::ranges::any_of(report.holds, [](const HoldsReport::Hold& hold) {
    return hold.processIdentifier.has_value();
  });
  if (!isAnyTold || !countsProcessesAlike()) return;
  platform::ProcFileSystem proc;
  std::set<std::int32_t> owners;
  for (HoldsReport::Hold& hold : report.holds) {
    const auto process = processOf(hold);
    if (!process) continue;
    const auto program = proc.read(*process, "comm");
    if (program) hold.program = tidewell::cleaned(program->substr(0, program->rfind('\n')));
    if (hold.activity.state == Activity::State::unknown) owners.insert(*process);
  }
  if (!owners.empty()) watch(owners, proc, report);
}

void HoldsReader::watch(const std::set<std::int32_t>& owners, platform::ProcFileSystem& proc,
                        HoldsReport& report) {
  platform::KernelCpuClock cpuClock;
  platform::ProcessActivity activity(proc, cpuClock);
  const tidewell::Moment begin = clock_.now();
  activity.begin(owners);
  clock_.sleepFor(kWatching);
  const auto doings = activity.end(clock_.now() - begin);
  for (HoldsReport::Hold& hold : report.holds) {
    const auto process = processOf(hold);
    if (!process || hold.activity.state != Activity::State::unknown) continue;
    hold.activity = activityOf(doings.at(*process));
  }
}

void HoldsReader::askStaylit(HoldsReport& report) {
  constexpr const char* kName = ApplicationService::kName;
  for (platform::Bus* bus : {&sessionBus_, &systemBus_}) {
    if (!bus->nameStatus(kName).isOwned()) continue;
    const auto reply =
        bus->call({kName, StatusInterface::kPath, "org.freedesktop.DBus.Properties", "GetAll"},
                  [](sd_bus_message* call) {
                    return sd_bus_message_append(call, "s", StatusInterface::kName);
                  });
    StatusReport status;
    if (!reply || !readStatus(reply.message.get(), status)) continue;
    // What it saw before a pause is old.
    if (status.state == StatusReport::State::paused) return;
    for (HoldsReport::Hold& hold : report.holds)
      hold.staylitSees = seenOf(hold, status);
    return;
  }
}

}  // namespace staylit
