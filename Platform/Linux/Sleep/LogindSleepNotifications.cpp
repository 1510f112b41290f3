#include "Platform/Linux/Sleep/LogindSleepNotifications.h"

#include <cerrno>
#include <cstddef>
#include <utility>

#include "Platform/Linux/Sleep/LogindLock.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace platform {
namespace {

/// How long until a lock is asked for again that logind did not answer for, as it may be when the
/// system starts.
constexpr tidewell::Seconds kPause{5};

}  // namespace

/// Shared with a request that may be answered late.
struct LogindSleepNotifications::Lock {
  Descriptor descriptor;
  /// logind has gone since, and may or may not still know of it.
  bool isDoubtful = false;
  bool isAsleep = false;

  void accept(Descriptor granted) {
    if (isAsleep) return;
    descriptor = std::move(granted);
    isDoubtful = false;
  }
};

LogindSleepNotifications::LogindSleepNotifications(Bus& systemBus, tidewell::MainLoop& loop)
    : systemBus_(systemBus), loop_(loop), lock_(std::make_shared<Lock>()) {}

LogindSleepNotifications::~LogindSleepNotifications() = default;

void LogindSleepNotifications::observe(std::function<void()> willSleep,
                                       std::function<void()> didWake) {
  observers_.push_back({std::move(willSleep), std::move(didWake)});
  if (!announcements_) listen();
}

void LogindSleepNotifications::listen() {
  const BusSignal signal{services::kLogind, services::kLogindPath, services::kLogindManager,
                         "PrepareForSleep"};
  announcements_ = systemBus_.subscribe(signal, [this](sd_bus_message* message) {
    int isAboutToSleep = 0;
    if (sd_bus_message_read(message, "b", &isAboutToSleep) > 0) {
      prepareForSleep(isAboutToSleep != 0);
    }
  });
  takeLock();
  presence_ = systemBus_.watchName(services::kLogind, [this](bool owned) {
    if (owned) {
      if (wantsLock()) takeLock();
      return;
    }
    lock_->isDoubtful = true;
    // Whether the sleep that it announced came about will never be said.
    lock_->isAsleep = false;
  });
}

void LogindSleepNotifications::prepareForSleep(bool isAboutToSleep) {
  lock_->isAsleep = isAboutToSleep;
  if (!isAboutToSleep) takeLock();
  // By index: an observer may add another one.
  for (std::size_t index = 0; index < observers_.size(); ++index) {
    const Observer observer = observers_[index];
    (isAboutToSleep ? observer.willSleep : observer.didWake)();
  }
  if (!isAboutToSleep) return;
  // Behind what the observers have just posted.
  loop_.async([descriptor = std::make_shared<Descriptor>(std::move(lock_->descriptor))] {
    descriptor->reset();
  });
}

bool LogindSleepNotifications::wantsLock() const {
  // While the system falls asleep nobody may be delayed by a new one.
  return !lock_->isAsleep && (!lock_->descriptor || lock_->isDoubtful);
}

void LogindSleepNotifications::takeLock() {
  retry_.reset();
  const auto late = [weak = std::weak_ptr<Lock>(lock_)](Descriptor descriptor) {
    if (const auto lock = weak.lock()) lock->accept(std::move(descriptor));
  };
  LogindLock taken =
      takeLogindLock(systemBus_, "sleep", "Lets go of its holds before sleep", "delay", late);
  // Only a new one replaces the old one, which may have outlived logind's restart.
  if (taken.descriptor) lock_->accept(std::move(taken.descriptor));
  if (taken.error != -ETIMEDOUT) return;
  retry_ = loop_.scheduleRepeating(kPause, [this] {
    retry_.reset();
    if (wantsLock()) takeLock();
  });
}

}  // namespace platform
