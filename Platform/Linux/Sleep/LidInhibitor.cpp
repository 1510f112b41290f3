#include "Platform/Linux/Sleep/LidInhibitor.h"

#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Linux/Sleep/LidHandler.h"
#include "Platform/Linux/Sleep/LogindInhibitors.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/Log.h"

namespace platform {
namespace {

using Failure = tidewell::LidSwitch::Failure;

constexpr std::string_view kWantsApproval =
    "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired";
constexpr std::string_view kRefused = "org.freedesktop.DBus.Error.AccessDenied";
constexpr std::string_view kCancelled = "org.freedesktop.PolicyKit1.Error.Cancelled";
/// How long until a lock is asked for again that a restarted logind did not grant.
constexpr tidewell::Seconds kRetakePause{7};

std::string describe(const LogindLock& failed) {
  if (failed.errorName == kWantsApproval)
    return "it needs an administrator's approval, and nothing here can ask for that";
  if (failed.errorName == kRefused) return "the system's policy does not allow it";
  return std::string("logind cannot be asked: ") + std::strerror(-failed.error);
}

/// That a desktop acts on the lid here, if so.
std::optional<Failure> desktopsClaim(Bus& systemBus) {
  const auto listed = listLogindInhibitors(systemBus);
  if (!listed) return std::nullopt;
  for (const ListedInhibitor& inhibitor : *listed) {
    if (const auto handler = lidHandler(inhibitor)) {
      return Failure{false, "the desktop (" + *handler +
                                ") handles the lid itself: choose in its own settings what "
                                "closing the lid does"};
    }
  }
  return std::nullopt;
}

}  // namespace

LidInhibitor::LidInhibitor(Bus& systemBus, tidewell::MainLoop& loop)
    : systemBus_(systemBus), loop_(loop) {}

LidInhibitor::~LidInhibitor() = default;

std::optional<Failure> LidInhibitor::hold(Approval approval) {
  if (lock_) return std::nullopt;
  if (auto claim = desktopsClaim(systemBus_)) return claim;
  // Before the lock, so that no restart in between goes unseen.
  presence_ =
      systemBus_.watchName(services::kLogind, [this](bool present) { logindChanged(present); });
  LogindLock taken = take(BusApproval::mustBeGiven);
  const bool isAsked = taken.errorName == kWantsApproval && approval == Approval::mayBeAsked;
  if (isAsked) taken = take(BusApproval::mayBeAsked);
  if (!taken.descriptor) {
    presence_.reset();
    // That the policy forbids it altogether was told before anybody was asked.
    const bool wasDeclined =
        isAsked && (taken.errorName == kRefused || taken.errorName == kCancelled);
    return Failure{wasDeclined, describe(taken)};
  }
  lock_ = std::move(taken.descriptor);
  isDoubtful_ = false;
  return std::nullopt;
}

std::optional<Failure> LidInhibitor::release() {
  presence_.reset();
  retry_.reset();
  lock_.reset();
  isDoubtful_ = false;
  return std::nullopt;
}

bool LidInhibitor::isHeld() {
  const BusReply reply = systemBus_.call(
      {services::kLogind, services::kLogindPath, "org.freedesktop.DBus.Properties", "Get"},
      [](sd_bus_message* message) {
        return sd_bus_message_append(message, "ss", services::kLogindManager, "BlockInhibited");
      });
  const char* locks = nullptr;
  if (!reply || sd_bus_message_read(reply.message.get(), "v", "s", &locks) < 0) return false;
  return namesLock(locks, services::kLidLock);
}

LogindLock LidInhibitor::take(BusApproval approval) {
  return takeLogindLock(systemBus_, services::kLidLock, "Keeps working with the lid closed",
                        "block", {}, approval);
}

void LidInhibitor::logindChanged(bool present) {
  retry_.reset();
  if (!present) {
    isDoubtful_ = true;
  } else if (isDoubtful_) {
    takeAgain();
  }
}

void LidInhibitor::takeAgain() {
  retry_.reset();
  LogindLock taken = take(BusApproval::mustBeGiven);
  if (taken.descriptor) {
    // Only a new one replaces the old one, which may have outlived logind's restart.
    lock_ = std::move(taken.descriptor);
    isDoubtful_ = false;
    return;
  }
  const bool isFinal = taken.errorName == kWantsApproval || taken.errorName == kRefused;
  if (isFinal) return tidewell::Log::error("the lid is no longer held: " + describe(taken));
  retry_ = loop_.scheduleRepeating(kRetakePause, [this] { takeAgain(); });
}

}  // namespace platform
