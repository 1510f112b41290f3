#include "Platform/Linux/Sleep/LidInhibitor.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Linux/Sleep/LidHandler.h"
#include "Platform/Linux/Sleep/LogindList.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/Log.h"

namespace platform {
namespace {

using Failure = tidewell::LidSwitch::Failure;

constexpr std::string_view kWantsApproval =
    "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired";
constexpr std::string_view kRefused = "org.freedesktop.DBus.Error.AccessDenied";
constexpr std::string_view kCancelled = "org.freedesktop.PolicyKit1.Error.Cancelled";
constexpr const char* kLidReason = "Keeps working with the lid closed";
/// The pause until the lock is asked for again after nobody answered.
constexpr tidewell::Seconds kRetakePause{7};
/// After so many failures in a row the lock counts as lost.
constexpr int kFailuresOfALoss = 2;

/// Whether asking again is useless.
bool isFinal(const LogindLock& failed) {
  return failed.errorName == kWantsApproval || failed.errorName == kRefused;
}

std::string describe(const LogindLock& failed) {
  if (failed.errorName == kWantsApproval)
    return "it needs an administrator's approval, and nothing here can ask for that";
  if (failed.errorName == kRefused) return "the system's policy does not allow it";
  return std::string("logind cannot be asked: ") + std::strerror(-failed.error);
}

/// The failure that says which desktop acts on the lid; absent when none does.
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

/// Whether logind still lists the lock that this program took before. Another program's lock does
/// not count, because it may end at any time.
bool isOurLockListed(Bus& systemBus) {
  const auto listed = listLogindInhibitors(systemBus);
  return listed && std::any_of(listed->begin(), listed->end(), [](const ListedInhibitor& each) {
           return each.holder == services::kDisplayName && each.why == kLidReason &&
                  each.locks == services::kLidLock && each.level != 0;
         });
}

}  // namespace

LidInhibitor::LidInhibitor(Bus& systemBus, tidewell::MainLoop& loop)
    : systemBus_(systemBus), loop_(loop) {}

LidInhibitor::~LidInhibitor() = default;

std::optional<Failure> LidInhibitor::hold() {
  LogindLock failed;
  auto failure = tryToHold(failed);
  if (failure) presence_.reset();
  return failure;
}

/// Takes the lock. After a failure, `failed` has logind's answer, and logind is still watched.
std::optional<Failure> LidInhibitor::tryToHold(LogindLock& failed) {
  lastFailure_.clear();
  if (holds()) return std::nullopt;
  retry_.reset();
  question_.reset();
  if (auto claim = desktopsClaim(systemBus_)) {
    failed.errorName = kRefused;
    lastFailure_ = claim->description;
    return claim;
  }
  // The watch comes before the lock, so that it sees every restart after the lock.
  watchLogind();
  LogindLock taken = take();
  if (!taken.descriptor) {
    failed = std::move(taken);
    lastFailure_ = describe(failed);
    return Failure{false, lastFailure_};
  }
  accept(std::move(taken.descriptor));
  return std::nullopt;
}

void LidInhibitor::holdAsking(Answer answer) {
  LogindLock failed;
  auto failure = tryToHold(failed);
  if (!failure) return answer(std::nullopt);
  if (failed.errorName == kWantsApproval) {
    answer_ = std::move(answer);
    question_ = askForLogindLock(systemBus_, services::kLidLock, kLidReason, "block",
                                 [this](LogindLock lock) { answered(std::move(lock)); });
    if (question_) return;
    answer = std::move(answer_);
  }
  presence_.reset();
  answer(std::move(failure));
}

void LidInhibitor::answered(LogindLock lock) {
  question_.reset();
  const Answer answer = std::exchange(answer_, {});
  lastFailure_.clear();
  if (lock.descriptor) {
    accept(std::move(lock.descriptor));
    return answer(std::nullopt);
  }
  presence_.reset();
  // The user was asked, so a refusal does not mean that the policy forbids the lock.
  const bool wasDeclined = lock.errorName == kRefused || lock.errorName == kCancelled;
  if (!wasDeclined) lastFailure_ = describe(lock);
  answer(Failure{wasDeclined, describe(lock)});
}

std::optional<Failure> LidInhibitor::resume() {
  LogindLock failed;
  auto failure = tryToHold(failed);
  if (!failure) return std::nullopt;
  failure->isTriedAgain = !isFinal(failed);
  if (failure->isTriedAgain) {
    failures_ = 1;
    tryLater();
  } else {
    presence_.reset();
  }
  return failure;
}

std::optional<Failure> LidInhibitor::release() {
  presence_.reset();
  retry_.reset();
  question_.reset();
  lock_.reset();
  isDoubtful_ = false;
  failures_ = 0;
  return std::nullopt;
}

bool LidInhibitor::holds() {
  return lock_ && failures_ < kFailuresOfALoss;
}

bool LidInhibitor::isTriedAgain() {
  return presence_ && !question_ && !holds();
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

std::shared_ptr<void> LidInhibitor::observe(std::function<void(bool holds)> changed) {
  auto observer = std::make_shared<Observer>(std::move(changed));
  observers_.push_back(observer);
  return observer;
}

void LidInhibitor::tell(bool holds) {
  std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
  const auto observers = observers_;
  for (const auto& weak : observers) {
    if (const auto observer = weak.lock()) (*observer)(holds);
  }
}

LogindLock LidInhibitor::take() {
  return takeLogindLock(systemBus_, services::kLidLock, kLidReason, "block");
}

void LidInhibitor::watchLogind() {
  presence_ =
      systemBus_.watchName(services::kLogind, [this](bool present) { logindChanged(present); });
}

void LidInhibitor::logindChanged(bool present) {
  if (question_) {
    // The question has ended with logind.
    if (!present) answered({-ECONNRESET, {}, {}});
    return;
  }
  if (!present) {
    retry_.reset();
    isDoubtful_ = true;
  } else if (isDoubtful_) {
    takeAgain();
  }
}

void LidInhibitor::takeAgain() {
  retry_.reset();
  LogindLock taken = take();
  if (!taken.descriptor) return failedAgain(taken);
  const bool wasHeld = holds();
  // Without a former lock, this is a resumption that failed at first and succeeds now.
  if (!lock_) tidewell::Log::info("clamshell sleep disabled");
  // The old lock may have outlived logind's restart, so it is kept until there is a new one.
  accept(std::move(taken.descriptor));
  if (!wasHeld) tell(true);
}

void LidInhibitor::failedAgain(const LogindLock& failed) {
  const bool isKnown = failures_ >= kFailuresOfALoss;
  const char* const what = lock_ ? "the lid is no longer held: " : "the lid could not be held: ";
  if (!isFinal(failed)) {
    ++failures_;
    tryLater();
  } else if (lock_ && isOurLockListed(systemBus_)) {
    // logind gives no new lock, but the old one has outlived the restart.
    accept(std::move(lock_));
    if (isKnown) tell(true);
    return;
  } else {
    release();
    failures_ = kFailuresOfALoss;
  }
  if (isKnown || failures_ < kFailuresOfALoss) return;
  tidewell::Log::error(what + describe(failed));
  tell(false);
}

void LidInhibitor::tryLater() {
  retry_ = loop_.scheduleRepeating(kRetakePause, [this] { takeAgain(); });
}

void LidInhibitor::accept(Descriptor lock) {
  lock_ = std::move(lock);
  isDoubtful_ = false;
  failures_ = 0;
}

}  // namespace platform
