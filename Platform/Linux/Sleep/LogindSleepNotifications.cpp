#include "Platform/Linux/Sleep/LogindSleepNotifications.h"

#include <cerrno>
#include <cstddef>
#include <utility>

#include "Platform/Linux/Sleep/LogindLock.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Platform/Posix/Files/Descriptor.h"

namespace platform {
namespace {

/// The pause until the lock is asked for again after logind did not answer, which may happen while
/// the system starts.
constexpr tidewell::Seconds kPause{5};

}  // namespace

/// The lock is shared with a request that may be answered late.
struct LogindSleepNotifications::Lock {
  Descriptor descriptor;
  /// Whether logind has restarted since, so that it may have forgotten the lock.
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
    // logind can no longer tell whether the announced sleep came.
    lock_->isAsleep = false;
  });
}

void LogindSleepNotifications::prepareForSleep(bool isAboutToSleep) {
  lock_->isAsleep = isAboutToSleep;
  if (!isAboutToSleep) takeLock();
  // The loop uses an index, because an observer may add another one.
  for (std::size_t index = 0; index < observers_.size(); ++index) {
    const Observer observer = observers_[index];
    (isAboutToSleep ? observer.willSleep : observer.didWake)();
  }
  if (!isAboutToSleep) return;
  // The lock is released after the work that the observers have just posted.
  loop_.async([descriptor = std::make_shared<Descriptor>(std::move(lock_->descriptor))] {
    descriptor->reset();
  });
}

bool LogindSleepNotifications::wantsLock() const {
  // While the system falls asleep, a new lock would delay the sleep.
  return !lock_->isAsleep && (!lock_->descriptor || lock_->isDoubtful);
}

void LogindSleepNotifications::takeLock() {
  retry_.reset();
  const auto late = [weak = std::weak_ptr<Lock>(lock_)](Descriptor descriptor) {
    if (const auto lock = weak.lock()) lock->accept(std::move(descriptor));
  };
  LogindLock taken =
      takeLogindLock(systemBus_, "sleep", "Lets go of its holds before sleep", "delay", late);
  // The old lock may have outlived logind's restart, so it is kept until there is a new one.
  if (taken.descriptor) lock_->accept(std::move(taken.descriptor));
  if (taken.error != -ETIMEDOUT) return;
  retry_ = loop_.scheduleRepeating(kPause, [this] {
    retry_.reset();
    if (wantsLock()) takeLock();
  });
}

}  // namespace platform
