#include "Platform/Linux/Applications/DesktopApplications.h"

#include "Platform/Linux/Applications/ProductNames.h"

namespace platform {
namespace {

constexpr std::size_t kMostUnits = 8192;

}  // namespace

DesktopApplications::DesktopApplications(DesktopFiles& files) : files_(files) {}

std::shared_ptr<const ApplicationIdentity> DesktopApplications::applicationOf(
    const ProcessFacts& facts) {
  const UnitName name = UnitName::fromControlGroup(facts.cgroup);
  Unit& unit = this->unit(name);
  if (unit.application) {
    if (facts.startTicks < unit.mainStart) {
      unit.mainStart = facts.startTicks;
      unit.mainSession = facts.session;
    }
    const bool standsForItself = facts.hasTerminal && facts.session != unit.mainSession;
    if (!standsForItself) return unit.application;
  }
  // No unit tells the application. The desktop may use no units, or somebody started the program by
  // hand.
  const auto application = files_.findByProgram(facts.program);
  return application ? identityOf(*application) : nullptr;
}

void DesktopApplications::refresh() {
  files_.refresh();
  // Units without an application are many, and asking again costs little. The others are kept,
  // because their main process may have ended. After months there may be too many of them, and then
  // all are looked up anew.
  std::erase_if(units_, [](const auto& entry) { return !entry.second.application; });
  if (units_.size() > kMostUnits) units_.clear();
}

DesktopApplications::Unit& DesktopApplications::unit(const UnitName& name) {
  const auto found = units_.find(name.path());
  if (found != units_.end()) return found->second;
  Unit& unit = units_[name.path()];
  unit.application = applicationOfUnit(name);
  return unit;
}

DesktopApplications::Identity DesktopApplications::applicationOfUnit(const UnitName& name) {
  for (const std::string& id : name.applicationIds()) {
    if (const auto application = files_.find(id)) return identityOf(*application);
  }
  return nullptr;
}

DesktopApplications::Identity DesktopApplications::identityOf(
    const DesktopApplication& application) {
  const std::string identifier = bundleIdentifierOf(application.id);
  Identity& identity = byIdentifier_[identifier];
  if (!identity || identity->localizedName != application.localizedName) {
    identity = std::make_shared<ApplicationIdentity>(
        ApplicationIdentity{identifier, application.localizedName});
  }
  return identity;
}

}  // namespace platform
