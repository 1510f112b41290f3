#include "Platform/Linux/Bus/Bus.h"

#include <malloc.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "Platform/Linux/Bus/NameWatch.h"
#include "Platform/Linux/Bus/SignalSubscription.h"

namespace platform {
namespace {

constexpr BusMethod kNameHasOwner{"org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus", "NameHasOwner"};
constexpr std::chrono::seconds kAsyncLimit{25};
/// When there are more late replies to wait for, the oldest is forgotten.
constexpr std::size_t kMostUnanswered = 256;

/// A person may take any time to find and type a password.
std::uint64_t asyncLimit(const BusMethod& method) {
  if (method.approval == BusApproval::mayBeAsked) return UINT64_MAX;
  return static_cast<std::uint64_t>(std::chrono::microseconds(kAsyncLimit).count());
}

/// So many messages take a few hundred kilobytes while they wait.
constexpr unsigned kMessagesOfAFlood = 256;
/// A block of memory of this size or more goes back to the system as soon as it is freed.
constexpr int kLargeBlockBytes = 256 * 1024;

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

/// Tells from the loop when connections are made and lost.
class ConnectionWatch : public BusListener {
 public:
  using Callback = std::function<void(bool connected)>;

  ConnectionWatch(tidewell::MainLoop& loop, Callback callback)
      : loop_(loop), callback_(std::move(callback)) {}

  void connected(sd_bus* /*bus*/) override { tell(true); }
  void disconnected() override { tell(false); }

 private:
  void tell(bool connected) {
    loop_.async([weak = weak_from_this(), this, connected] {
      if (const BusListening keep = weak.lock()) callback_(connected);
    });
  }

  tidewell::MainLoop& loop_;
  Callback callback_;
};

}  // namespace

Buses::Buses(EventLoop& loop, Serving serving)
    : system(
          loop, Bus::Kind::system,
          serving == Serving::machine ? BusTrust::Calls::ofEverybody : BusTrust::Calls::ofNobody),
      session(loop, serving == Serving::machine ? Bus::Kind::none : Bus::Kind::session) {}

Bus::Bus(EventLoop& loop, Kind kind, BusTiming timing)
    : Bus(loop, kind,
          kind == Kind::session ? BusTrust::Calls::ofOwnUser : BusTrust::Calls::ofNobody,
          std::move(timing)) {}

Bus::Bus(EventLoop& loop, Kind kind, BusTrust::Calls calls, BusTiming timing)
    : loop_(loop),
      timing_(std::move(timing)),
      trust_(calls, timing_),
      keeper_(loop, kind, timing_, *this) {
  // Without this call the C library raises the limit whenever it frees a large block. It then keeps
  // tens of megabytes after somebody has sent messages of that size.
  ::mallopt(M_MMAP_THRESHOLD, kLargeBlockBytes);
}

Bus::~Bus() {
  for (const BusListening& listener : listeners())
    listener->disconnected();
  trust_.forget();
}

int Bus::connect() {
  return keeper_.connectBefore(std::chrono::steady_clock::now() + timing_.callLimit);
}

void Bus::connected(sd_bus* bus) {
  trust_.connected(bus);
  for (const BusListening& listener : listeners())
    listener->connected(bus);
  loop_.wake();
}

void Bus::disconnected(bool wasReady) {
  unanswered_.clear();
  peers_.clear();
  trust_.forget();
  if (!wasReady) return;
  for (const BusListening& listener : listeners())
    listener->disconnected();
}

bool Bus::arrived(sd_bus_message* message) {
  // Messages that came while a call waited were kept until now. If somebody sends without a pause,
  // they would leave the program with memory that it no longer needs.
  if (++arrivals_ % kMessagesOfAFlood == 0) ::malloc_trim(0);
  return trust_.refuses(message) || takesLateReply(message);
}

bool Bus::takesLateReply(sd_bus_message* message) {
  std::uint64_t cookie = 0;
  if (unanswered_.empty() || sd_bus_message_get_reply_cookie(message, &cookie) < 0) return false;
  const auto found = unanswered_.find(cookie);
  if (found == unanswered_.end()) return false;
  const Unanswered call = std::move(found->second);
  unanswered_.erase(found);
  // A service that answers after all may be called again at once.
  answered(call.destination);
  if (call.late && sd_bus_message_is_method_error(message, nullptr) <= 0) {
    call.late(BusMessage(sd_bus_message_ref(message)));
  }
  return true;
}

int Bus::remembered(const BusMethod& method) const {
  if (const int error = keeper_.remembered(); error < 0) return error;
  const auto peer = peers_.find(method.destination);
  return peer == peers_.end() ? 0 : peer->second.remembered(timing_.now());
}

void Bus::failedToAnswer(const BusMethod& method) {
  // The bus may hang, or only this service. So for a while neither is called. The service's failure
  // is remembered even when the rest of the bus answers in between.
  //
  // A bus in order may still be starting the service, so then only the service is not called.
  const bool mayBeStarting = method.activation == BusActivation::ifNeeded;
  if (!mayBeStarting) keeper_.failedToAnswer();
  peers_.try_emplace(method.destination, timing_.firstPause, timing_.longestPause)
      .first->second.failed(-ETIMEDOUT, timing_.now());
}

void Bus::answered(const std::string& destination) {
  keeper_.answered();
  if (const auto peer = peers_.find(destination); peer != peers_.end()) peers_.erase(peer);
}

BusReply Bus::prepare(const BusMethod& method, const Arguments& arguments) const {
  sd_bus_message* raw = nullptr;
  int result = sd_bus_message_new_method_call(handle(), &raw, method.destination, method.path,
                                              method.interface, method.member);
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
  const auto deadline = std::chrono::steady_clock::now() + timing_.callLimit;
  if (const int error = keeper_.connectBefore(deadline); error < 0) return {error, {}, {}};
  if (const int error = remembered(method); error < 0) return {error, {}, {}};
  const BusReply request = prepare(method, arguments);
  if (!request) return {request.error, {}, {}};
  BusReply reply = exchange(request.message.get(), method, deadline, std::move(late));
  loop_.wake();
  return reply;
}

BusReply Bus::exchange(sd_bus_message* message, const BusMethod& method,
                       BusTiming::Deadline deadline, LateReply late) {
  sd_bus* const bus = handle();
  sd_bus_error error{};
  sd_bus_message* raw = nullptr;
  const int result =
      sd_bus_call(bus, message, BusTiming::microsecondsUntil(deadline), &error, &raw);
  BusReply reply{std::min(result, 0), error.name ? error.name : "", BusMessage(raw)};
  sd_bus_error_free(&error);
  if (result >= 0 && !BusTrust::mayBeReplyOf(method.destination, raw)) return {-EBADMSG, {}, {}};
  if (result < 0 && sd_bus_is_open(bus) <= 0) {
    keeper_.lost(result);
  } else if (result == -ETIMEDOUT && BusTiming::isOver(deadline)) {
    failedToAnswer(method);
    awaitLateReply(message, {method.destination, std::move(late)});
  } else {
    answered(method.destination);
  }
  return reply;
}

void Bus::awaitLateReply(sd_bus_message* message, Unanswered call) {
  std::uint64_t cookie = 0;
  if (sd_bus_message_get_cookie(message, &cookie) < 0) return;
  unanswered_[cookie] = std::move(call);
  if (unanswered_.size() > kMostUnanswered) unanswered_.erase(unanswered_.begin());
}

BusSlot Bus::callAsync(const BusMethod& method, const Arguments& arguments, ReplyHandler handler) {
  if (!handle()) return {};
  const BusReply request = prepare(method, arguments);
  if (!request) return {};
  auto question = std::make_unique<Question>(Question{method.destination, std::move(handler)});
  sd_bus_slot* raw = nullptr;
  if (sd_bus_call_async(handle(), &raw, request.message.get(), handleReply, question.get(),
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
  if (!handle()) return -ENOTCONN;
  const BusReply request = prepare(method, arguments);
  if (!request) return request.error;
  // A message that is sent without a place for its cookie says that it wants no reply.
  return std::min(0, sd_bus_send(handle(), request.message.get(), nullptr));
}

NameStatus Bus::nameStatus(const std::string& name) {
  using State = NameStatus::State;
  for (const BusListening& listener : listeners()) {
    if (const auto owned = listener->isOwned(name)) return {*owned ? State::owned : State::free};
  }
  const BusReply reply = call(kNameHasOwner, [&name](sd_bus_message* message) {
    return sd_bus_message_append(message, "s", name.c_str());
  });
  if (!reply) return {State::unknown, reply.error};
  int owned = 0;
  const int result = sd_bus_message_read(reply.message.get(), "b", &owned);
  if (result < 0) return {State::unknown, result};
  for (const BusListening& listener : listeners())
    listener->learn(name, owned != 0);
  return {owned != 0 ? State::owned : State::free};
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
  if (sd_bus* const bus = handle()) {
    listener->connected(bus);
  } else {
    keeper_.listeningBegan();
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
