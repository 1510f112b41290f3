#include "Platform/Linux/Bus/Bus.h"

#include <malloc.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "Platform/Linux/Bus/ConnectionWatch.h"
#include "Platform/Linux/Bus/NameWatch.h"
#include "Platform/Linux/Bus/SignalSubscription.h"

namespace platform {
namespace {

constexpr BusMethod kNameHasOwner{"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus", "NameHasOwner"};
constexpr std::chrono::seconds kAsyncLimit{25};
/// When there are more, the oldest is forgotten.
constexpr std::size_t kMostUnanswered = 256;

/// At least 1, because sd-bus takes 0 for its own default, which is far longer.
std::uint64_t microsecondsUntil(BusTiming::Deadline deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
      deadline - std::chrono::steady_clock::now());
  return static_cast<std::uint64_t>(std::max<std::int64_t>(1, left.count()));
}

/// A person may take any time to find and type a password.
std::uint64_t asyncLimit(const BusMethod& method) {
  if (method.approval == BusApproval::mayBeAsked) return UINT64_MAX;
  return static_cast<std::uint64_t>(std::chrono::microseconds(kAsyncLimit).count());
}

/// So many messages take a few hundred kilobytes while they wait.
constexpr unsigned kMessagesOfAFlood = 256;
/// A block of memory of this size or more goes back to the system as soon as it is freed.
constexpr int kLargeBlockBytes = 256 * 1024;

bool isOver(BusTiming::Deadline deadline) {
  return std::chrono::steady_clock::now() >= deadline;
}

/// A call that waits for its reply.
struct Question {
  std::string destination;
  Bus::ReplyHandler handler;
};

int handleReply(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
  const Question question = *static_cast<Question*>(data);
  BusReply reply;
  if (!BusTrust::mayBeReplyOf(question.destination, message)) {
    reply.error = -EBADMSG;
  } else if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
    reply.error = -std::max(1, sd_bus_message_get_errno(message));
    reply.errorName = error->name;
  }
  reply.message = BusMessage(sd_bus_message_ref(message));
  question.handler(std::move(reply));
  return 0;
}

void dropQuestion(void* data) {
  delete static_cast<Question*>(data);
}

}  // namespace

Bus::Bus(EventLoop& loop, Kind kind, BusTiming timing)
    : loop_(loop),
      kind_(kind),
      timing_(std::move(timing)),
      backoff_(timing_.firstPause, timing_.longestPause),
      trust_(kind == Kind::session ? BusTrust::Calls::ofOwnUser : BusTrust::Calls::ofNobody,
             timing_) {
  // Without this call the C library raises the limit by itself whenever it frees large blocks. It
  // then keeps tens of megabytes if somebody sends messages of that size.
  ::mallopt(M_MMAP_THRESHOLD, kLargeBlockBytes);
}

Bus::~Bus() {
  for (const BusListening& listener : listeners())
    listener->disconnected();
  trust_.forget();
}

int Bus::connect() {
  return connectBefore(std::chrono::steady_clock::now() + timing_.callLimit);
}

int Bus::connectBefore(BusTiming::Deadline deadline) {
  if (isReady_ && sd_bus_is_open(connection_.get()) > 0) return 0;
  // The connection has died, and the loop has not noticed it yet.
  if (isReady_) lost(-ECONNRESET);
  if (const int error = backoff_.remembered(timing_.now()); error < 0) return error;
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

int Bus::open() {
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

int Bus::waitUntilReady(BusTiming::Deadline deadline) {
  sd_bus* const bus = connection_.get();
  while (sd_bus_is_ready(bus) <= 0) {
    const int processed = sd_bus_process(bus, nullptr);
    if (processed < 0) return processed;
    if (connection_.get() != bus || sd_bus_is_open(bus) <= 0) return -ECONNRESET;
    if (processed > 0) continue;
    if (isOver(deadline)) return -ETIMEDOUT;
    const int waited = sd_bus_wait(bus, microsecondsUntil(deadline));
    if (waited < 0 && waited != -EINTR) return waited;
  }
  return 0;
}

void Bus::becameReady() {
  isReady_ = true;
  ++number_;
  backoff_.succeeded();
  timer_.reset();
  trust_.connected(connection_.get());
  for (const BusListening& listener : listeners())
    listener->connected(connection_.get());
  loop_.wake();
}

void Bus::lost(int error) {
  const bool wasReady = std::exchange(isReady_, false);
  probe_.reset();
  closed_.reset();
  filter_.reset();
  late_.clear();
  peers_.clear();
  trust_.forget();
  if (connection_) {
    retired_.push_back(std::exchange(connection_, {}));
    loop_.async([bus = self_.make()] {
      if (bus) bus->retired_.clear();
    });
  }
  backoff_.failed(error, timing_.now());
  if (wasReady) {
    for (const BusListening& listener : listeners())
      listener->disconnected();
  }
  scheduleRetry();
}

void Bus::scheduleRetry() {
  timer_.reset();
  if (listeners().empty()) return;
  const tidewell::Seconds pause = backoff_.remaining(timing_.now());
  timer_ = loop_.scheduleRepeating(pause, [this] { retry(); });
  timer_->setTolerance(pause / 8);
}

void Bus::retry() {
  if (isReady_) return timer_.reset();
  // The attempt at a connection that began when this timer was set is still going on.
  if (connection_) return lost(-ETIMEDOUT);
  if (backoff_.remembered(timing_.now()) < 0) return scheduleRetry();
  if (const int error = open(); error < 0) return lost(error);
  timer_ = loop_.scheduleRepeating(timing_.callLimit, [this] { retry(); });
}

int Bus::probed(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
  auto& self = *static_cast<Bus*>(data);
  if (sd_bus_message_is_method_error(reply, nullptr) > 0) return 0;
  if (!self.isReady_) self.becameReady();
  return 0;
}

int Bus::closed(sd_bus_message* /*message*/, void* data, sd_bus_error* /*error*/) {
  static_cast<Bus*>(data)->lost(-ECONNRESET);
  return 0;
}

int Bus::filter(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
  auto& self = *static_cast<Bus*>(data);
  self.arrived();
  if (self.trust_.refuses(message)) return 1;
  std::uint64_t cookie = 0;
  if (self.late_.empty() || sd_bus_message_get_reply_cookie(message, &cookie) < 0) return 0;
  const auto found = self.late_.find(cookie);
  if (found == self.late_.end()) return 0;
  const Unanswered call = std::move(found->second);
  self.late_.erase(found);
  // A service that answers after all may be called again at once.
  self.answered(call.destination);
  if (!call.late || sd_bus_message_is_method_error(message, nullptr) > 0) return 1;
  call.late(BusMessage(sd_bus_message_ref(message)));
  return 1;
}

void Bus::arrived() {
  // Messages that came while a call waited were kept until now. If somebody sends without a pause,
  // they would leave the program with memory that it no longer needs.
  if (++arrivals_ % kMessagesOfAFlood == 0) ::malloc_trim(0);
}

int Bus::remembered(const BusMethod& method) const {
  const auto now = timing_.now();
  if (const int error = backoff_.remembered(now); error < 0) return error;
  const auto peer = peers_.find(method.destination);
  return peer == peers_.end() ? 0 : peer->second.remembered(now);
}

void Bus::failedToAnswer(const BusMethod& method) {
  // It cannot be told yet whether the bus hangs or only one service does, so neither is called for
  // a while. The service's failure is remembered even when the rest of the bus answers in between.
  const auto now = timing_.now();
  // A service that has to be started first takes its time, while the bus is in order.
  const bool mayBeStarting = method.activation == BusActivation::ifNeeded;
  if (!mayBeStarting) backoff_.failed(-ETIMEDOUT, now);
  peers_.try_emplace(method.destination, timing_.firstPause, timing_.longestPause)
      .first->second.failed(-ETIMEDOUT, now);
}

void Bus::answered(const std::string& destination) {
  backoff_.succeeded();
  if (const auto peer = peers_.find(destination); peer != peers_.end()) peers_.erase(peer);
}

BusReply Bus::prepare(const BusMethod& method, const Arguments& arguments) {
  sd_bus_message* raw = nullptr;
  int result = sd_bus_message_new_method_call(connection_.get(), &raw, method.destination,
                                              method.path, method.interface, method.member);
  BusMessage message(raw);
  if (result >= 0) {
    result =
        sd_bus_message_set_auto_start(raw, method.activation == BusActivation::ifNeeded ? 1 : 0);
  }
  if (result >= 0 && method.approval == BusApproval::mayBeAsked) {
    result = sd_bus_message_set_allow_interactive_authorization(raw, 1);
  }
  if (result >= 0 && arguments) result = arguments(raw);
  if (result < 0) return {result, {}, {}};
  return {0, {}, std::move(message)};
}

BusReply Bus::call(const BusMethod& method, const Arguments& arguments, LateReply late) {
  const auto begin = std::chrono::steady_clock::now();
  const auto deadline = begin + timing_.callLimit;
  if (const int error = connectBefore(deadline); error < 0) return {error, {}, {}};
  if (const int error = remembered(method); error < 0) return {error, {}, {}};
  const BusReply request = prepare(method, arguments);
  if (!request) return {request.error, {}, {}};
  BusReply reply = exchange(request.message.get(), method, deadline, std::move(late));
  loop_.wake();
  return reply;
}

BusReply Bus::exchange(sd_bus_message* message, const BusMethod& method,
                       BusTiming::Deadline deadline, LateReply late) {
  sd_bus_error error{};
  sd_bus_message* raw = nullptr;
  const int result =
      sd_bus_call(connection_.get(), message, microsecondsUntil(deadline), &error, &raw);
  BusReply reply{std::min(result, 0), error.name ? error.name : "", BusMessage(raw)};
  sd_bus_error_free(&error);
  if (result >= 0 && !BusTrust::mayBeReplyOf(method.destination, raw)) return {-EBADMSG, {}, {}};
  if (result >= 0) {
    answered(method.destination);
  } else if (sd_bus_is_open(connection_.get()) <= 0) {
    lost(result);
  } else if (result == -ETIMEDOUT && isOver(deadline)) {
    failedToAnswer(method);
    std::uint64_t cookie = 0;
    if (sd_bus_message_get_cookie(message, &cookie) >= 0) {
      late_[cookie] = {method.destination, std::move(late)};
      if (late_.size() > kMostUnanswered) late_.erase(late_.begin());
    }
  } else {
    answered(method.destination);
  }
  return reply;
}

BusSlot Bus::callAsync(const BusMethod& method, const Arguments& arguments, ReplyHandler handler) {
  if (!isReady_) return {};
  const BusReply request = prepare(method, arguments);
  if (!request) return {};
  auto question = std::make_unique<Question>(Question{method.destination, std::move(handler)});
  sd_bus_slot* raw = nullptr;
  if (sd_bus_call_async(connection_.get(), &raw, request.message.get(), handleReply, question.get(),
                        asyncLimit(method)) < 0) {
    return {};
  }
  BusSlot slot(raw);
  if (sd_bus_slot_set_destroy_callback(raw, dropQuestion) < 0) return {};
  static_cast<void>(question.release());
  loop_.wake();
  return slot;
}

int Bus::send(const BusMethod& method, const Arguments& arguments) {
  if (!isReady_) return -ENOTCONN;
  const BusReply request = prepare(method, arguments);
  if (!request) return request.error;
  // A message that is sent without a place for its cookie says that it wants no reply.
  return std::min(0, sd_bus_send(connection_.get(), request.message.get(), nullptr));
}

int Bus::nameHasOwner(const std::string& name) {
  for (const BusListening& listener : listeners()) {
    if (const auto owned = listener->isOwned(name)) return *owned ? 1 : 0;
  }
  const BusReply reply = call(kNameHasOwner, [&name](sd_bus_message* message) {
    return sd_bus_message_append(message, "s", name.c_str());
  });
  if (!reply) return reply.error;
  int owned = 0;
  if (const int result = sd_bus_message_read(reply.message.get(), "b", &owned); result < 0) {
    return result;
  }
  for (const BusListening& listener : listeners())
    listener->learn(name, owned != 0);
  return owned != 0 ? 1 : 0;
}

BusListening Bus::watchName(std::string name, std::function<void(bool owned)> callback) {
  return listen(std::make_shared<NameWatch>(loop_, std::move(name), std::move(callback)));
}

BusListening Bus::subscribe(BusSignal signal, std::function<void(sd_bus_message*)> callback) {
  auto sender = ownerWatch(signal.sender);
  return listen(std::make_shared<SignalSubscription>(std::move(signal), std::move(sender),
                                                     std::move(callback)));
}

std::shared_ptr<NameWatch> Bus::ownerWatch(const std::string& name) {
  std::erase_if(ownerWatches_, [](const auto& entry) { return entry.second.expired(); });
  if (const auto found = ownerWatches_.find(name); found != ownerWatches_.end()) {
    return found->second.lock();
  }
  auto watch = std::make_shared<NameWatch>(loop_, name, nullptr);
  ownerWatches_[name] = watch;
  listen(watch);
  return watch;
}

BusListening Bus::watchConnection(std::function<void(bool connected)> callback) {
  return listen(std::make_shared<ConnectionWatch>(loop_, std::move(callback)));
}

BusListening Bus::listen(BusListening listener) {
  listeners_.push_back(listener);
  if (isReady_) {
    listener->connected(connection_.get());
  } else if (!timer_ && backoff_.remembered(timing_.now()) < 0) {
    scheduleRetry();
  }
  return listener;
}

std::vector<BusListening> Bus::listeners() {
  std::erase_if(listeners_, [](const auto& listener) { return listener.expired(); });
  std::vector<BusListening> result;
  for (const auto& listener : listeners_)
    result.push_back(listener.lock());
  return result;
}

}  // namespace platform
