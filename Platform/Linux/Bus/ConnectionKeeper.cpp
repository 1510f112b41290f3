#include "Platform/Linux/Bus/ConnectionKeeper.h"

#include <cerrno>
#include <chrono>
#include <utility>

namespace platform {

ConnectionKeeper::ConnectionKeeper(EventLoop& loop, Kind kind, const BusTiming& timing,
                                   Owner& owner)
    : loop_(loop),
      kind_(kind),
      timing_(timing),
      owner_(owner),
      backoff_(timing.firstPause, timing.longestPause) {}

int ConnectionKeeper::connectBefore(BusTiming::Deadline deadline) {
  if (isReady_ && sd_bus_is_open(connection_.get()) > 0) return 0;
  // The connection has died, and the loop has not noticed it yet.
  if (isReady_) lost(-ECONNRESET);
  if (const int error = remembered(); error < 0) return error;
  if (!connection_) {
    if (const int error = open(); error < 0) {
      lost(error);
      return error;
    }
  }
  if (const int error = waitUntilReady(deadline); error < 0) {
    if (connection_) lost(error);
    return error;
  }
  if (!isReady_) becameReady();
  return 0;
}

int ConnectionKeeper::open() {
  if (kind_ == Kind::none) return -ENOMEDIUM;
  sd_bus* bus = nullptr;
  int result = kind_ == Kind::system ? sd_bus_open_system(&bus) : sd_bus_open_user(&bus);
  if (result < 0) return result;
  connection_ = BusConnection(bus);
  sd_bus_slot* slot = nullptr;
  result = sd_bus_attach_event(bus, loop_.handle(), SD_EVENT_PRIORITY_NORMAL);
  if (result >= 0) {
    result = sd_bus_match_signal_async(bus, &slot, "org.freedesktop.DBus.Local", nullptr,
                                       "org.freedesktop.DBus.Local", "Disconnected", closed,
                                       nullptr, this);
  }
  if (result < 0) return result;
  closed_ = BusSlot(slot);
  if ((result = sd_bus_add_filter(bus, &slot, filter, this)) < 0) return result;
  filter_ = BusSlot(slot);
  // The loop is not told when a connection becomes ready, so the answer to a question has to tell
  // it.
  result = sd_bus_call_method_async(bus, &slot, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                    "org.freedesktop.DBus", "GetId", probed, this, nullptr);
  if (result < 0) return result;
  probe_ = BusSlot(slot);
  return 0;
}

int ConnectionKeeper::waitUntilReady(BusTiming::Deadline deadline) {
  sd_bus* const bus = connection_.get();
  while (sd_bus_is_ready(bus) <= 0) {
    const int processed = sd_bus_process(bus, nullptr);
    if (processed < 0) return processed;
    if (connection_.get() != bus || sd_bus_is_open(bus) <= 0) return -ECONNRESET;
    if (processed > 0) continue;
    if (BusTiming::isOver(deadline)) return -ETIMEDOUT;
    const int waited = sd_bus_wait(bus, BusTiming::microsecondsUntil(deadline));
    if (waited < 0 && waited != -EINTR) return waited;
  }
  return 0;
}

void ConnectionKeeper::becameReady() {
  isReady_ = true;
  ++number_;
  backoff_.succeeded();
  timer_.reset();
  owner_.connected(connection_.get());
}

void ConnectionKeeper::lost(int error) {
  const bool wasReady = std::exchange(isReady_, false);
  probe_.reset();
  closed_.reset();
  filter_.reset();
  if (connection_) {
    retired_.push_back(std::exchange(connection_, {}));
    loop_.async([self = self_.make()] {
      if (self) self->retired_.clear();
    });
  }
  backoff_.failed(error, timing_.now());
  owner_.disconnected(wasReady);
  scheduleRetry();
}

void ConnectionKeeper::scheduleRetry() {
  timer_.reset();
  if (!owner_.isListening()) return;
  const tidewell::Seconds pause = backoff_.remaining(timing_.now());
  timer_ = loop_.scheduleRepeating(pause, [this] { retry(); });
  timer_->setTolerance(pause / 8);
}

void ConnectionKeeper::retry() {
  if (isReady_) return timer_.reset();
  // The attempt at a connection that began when this timer was set is still going on.
  if (connection_) return lost(-ETIMEDOUT);
  if (remembered() < 0) return scheduleRetry();
  if (const int error = open(); error < 0) return lost(error);
  timer_ = loop_.scheduleRepeating(timing_.callLimit, [this] { retry(); });
}

int ConnectionKeeper::probed(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
  auto& self = *static_cast<ConnectionKeeper*>(data);
  if (sd_bus_message_is_method_error(reply, nullptr) > 0) return 0;
  if (!self.isReady_) self.becameReady();
  return 0;
}

int ConnectionKeeper::closed(sd_bus_message* /*message*/, void* data, sd_bus_error* /*error*/) {
  static_cast<ConnectionKeeper*>(data)->lost(-ECONNRESET);
  return 0;
}

int ConnectionKeeper::filter(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
  return static_cast<ConnectionKeeper*>(data)->owner_.arrived(message) ? 1 : 0;
}

void ConnectionKeeper::listeningBegan() {
  if (!isReady_ && !timer_ && remembered() < 0) scheduleRetry();
}

}  // namespace platform
