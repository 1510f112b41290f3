#include "Platform/Linux/Sleep/SleepServices.h"

#include <cerrno>
#include <utility>

#include "Platform/Linux/Sleep/Services.h"

namespace platform {
namespace {

/// Whether connecting failed because there is no such bus here. Other errors mean a bus in trouble.
bool saysThereIsNoBus(int error) {
  switch (error) {
    case -ENOENT:
    case -ENOTDIR:
    case -ECONNREFUSED:
    case -ENOMEDIUM:
    case -EINVAL:  // an address such as "disabled:"
      return true;
    default:
      return false;
  }
}

}  // namespace

SleepServices::SleepServices(Bus& systemBus, Bus& sessionBus, Changed changed)
    : systemBus_(systemBus),
      sessionBus_(sessionBus),
      logind_(systemBus),
      sessionManager_(sessionBus),
      powerManagement_(FreedesktopInhibitor::powerManagement(sessionBus)),
      screenSaver_(FreedesktopInhibitor::screenSaver(sessionBus)) {
  const auto watch = [&](Bus& bus, const std::string& name, InhibitMechanism* mechanism) {
    watches_.push_back(
        bus.watchName(name, [changed, mechanism](bool present) { changed(mechanism, present); }));
  };
  watch(systemBus, logind_.serviceName(), &logind_);
  // This service is watched before those that it decides about, so that KDE is recognised when all
  // of them appear together.
  watch(sessionBus, services::kSolid, nullptr);
  watch(sessionBus, services::kLxqtPowerManager, nullptr);
  watch(sessionBus, sessionManager_.serviceName(), &sessionManager_);
  watch(sessionBus, powerManagement_.serviceName(), &powerManagement_);
  watch(sessionBus, screenSaver_.serviceName(), &screenSaver_);
}

SleepServices::Row SleepServices::row(tidewell::AssertionKind kind) {
  Row row;
  if (isPresent(sessionBus_, sessionManager_.serviceName(), row.error)) {
    row.mechanisms.push_back(&sessionManager_);
  } else if (isPresent(sessionBus_, powerManagement_.serviceName(), row.error)) {
    row.mechanisms.push_back(&powerManagement_);
    if (kind == tidewell::AssertionKind::display &&
        isPresent(sessionBus_, screenSaver_.serviceName(), row.error)) {
      row.mechanisms.push_back(&screenSaver_);
    }
  }
  // For logind's idle lock, KDE also keeps the screen on. A hold of the system alone must not do
  // that.
  const bool keepsScreenOn = kind == tidewell::AssertionKind::system && !row.mechanisms.empty() &&
                             isPresent(sessionBus_, services::kSolid, row.error);
  if (!keepsScreenOn && isPresent(systemBus_, logind_.serviceName(), row.error)) {
    row.mechanisms.push_back(&logind_);
  }
  return row;
}

SleepAssertion::Mechanisms SleepServices::all() {
  return {&sessionManager_, &powerManagement_, &screenSaver_, &logind_};
}

bool SleepServices::isPresent(Bus& bus, const std::string& name, int& error) {
  const NameStatus status = bus.nameStatus(name);
  if (status.error < 0 && !saysThereIsNoBus(status.error) && error == 0) error = status.error;
  return status.isOwned();
}

}  // namespace platform
