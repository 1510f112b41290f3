#include "Platform/Linux/Bus/BusTrust.h"

#include <cerrno>
#include <cstdint>
#include <string_view>
#include <utility>

#include "Platform/Linux/Bus/BusHandles.h"

namespace platform {
namespace {

constexpr const char* kDriver = "org.freedesktop.DBus";
constexpr const char* kDriverPath = "/org/freedesktop/DBus";
/// A new caller may cost two questions, and both together must not take longer than a call may.
constexpr std::uint64_t kLimitMicroseconds = 500'000;

bool equals(const char* text, std::string_view wanted) {
  return text != nullptr && wanted == text;
}

BusMessage questionForUser(sd_bus* bus, const char* name) {
  sd_bus_message* raw = nullptr;
  sd_bus_message_new_method_call(bus, &raw, kDriver, kDriverPath, kDriver, "GetConnectionUnixUser");
  BusMessage question(raw);
  return raw && sd_bus_message_append(raw, "s", name) >= 0 ? std::move(question) : BusMessage();
}

std::optional<uid_t> userIn(sd_bus_message* answer) {
  std::uint32_t user = 0;
  if (!BusTrust::isFromBus(answer) || sd_bus_message_read(answer, "u", &user) < 0) {
    return std::nullopt;
  }
  return user;
}

}  // namespace

// The pause does not grow, so that a bus that works again is soon asked about callers again.
BusTrust::BusTrust(Calls calls, const BusTiming& timing)
    : calls_(calls), now_(timing.now), unanswered_(timing.firstPause, timing.firstPause) {}

void BusTrust::connected(sd_bus* bus) {
  const char* own = nullptr;
  if (calls_ != Calls::ofOwnUser || sd_bus_get_unique_name(bus, &own) < 0) return;
  const BusMessage question = questionForUser(bus, own);
  sd_bus_slot* slot = nullptr;
  if (question) sd_bus_call_async(bus, &slot, question.get(), ownUserTold, this, UINT64_MAX);
  question_ = BusSlot(slot);
}

int BusTrust::ownUserTold(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
  auto& self = *static_cast<BusTrust*>(data);
  if (const auto user = userIn(reply)) self.ownUser_ = user;
  return 0;
}

std::optional<uid_t> BusTrust::userOf(sd_bus* bus, const char* name) {
  const BusMessage question = questionForUser(bus, name);
  if (!question || unanswered_.remembered(now_()) < 0) return std::nullopt;
  sd_bus_message* raw = nullptr;
  const int result = sd_bus_call(bus, question.get(), kLimitMicroseconds, nullptr, &raw);
  const BusMessage answer(raw);
  if (result == -ETIMEDOUT) unanswered_.failed(result, now_());
  return result >= 0 ? userIn(raw) : std::nullopt;
}

bool BusTrust::isFromBus(sd_bus_message* message) {
  return equals(sd_bus_message_get_sender(message), kDriver);
}

bool BusTrust::mayBeReplyOf(const std::string& destination, sd_bus_message* reply) {
  if (isFromBus(reply)) return true;
  const bool isKnownByThatName = destination == kDriver || destination.starts_with(':');
  return !isKnownByThatName || equals(sd_bus_message_get_sender(reply), destination);
}

bool BusTrust::refuses(sd_bus_message* message) {
  if (sd_bus_message_is_signal(message, kDriver, nullptr) > 0) return !isFromBus(message);
  if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0 || mayCall(message)) {
    return false;
  }
  sd_bus_reply_method_errorf(message, SD_BUS_ERROR_ACCESS_DENIED,
                             "Only programs of the same user may call this one");
  return true;
}

bool BusTrust::mayCall(sd_bus_message* call) {
  if (calls_ == Calls::ofEverybody) return true;
  const char* sender = sd_bus_message_get_sender(call);
  if (calls_ == Calls::ofNobody || sender == nullptr) return false;
  if (const auto known = remembered(sender)) return *known;
  sd_bus* const bus = sd_bus_message_get_bus(call);
  const char* own = nullptr;
  // The bus may see another number than the program does, for example from outside of a container.
  if (!ownUser_ && sd_bus_get_unique_name(bus, &own) >= 0) ownUser_ = userOf(bus, own);
  const std::optional<uid_t> user = userOf(bus, sender);
  if (!user || !ownUser_) return false;
  if (callers_.size() >= kMostCallers) callers_.pop_front();
  callers_.emplace_back(sender, *user == *ownUser_);
  return callers_.back().second;
}

std::optional<bool> BusTrust::remembered(const std::string& caller) const {
  for (const auto& [name, mayCall] : callers_) {
    if (name == caller) return mayCall;
  }
  return std::nullopt;
}

void BusTrust::forget() {
  ownUser_.reset();
  callers_.clear();
  question_.reset();
  unanswered_.succeeded();
}

}  // namespace platform
