#include "Platform/Linux/Bus/BusTrust.h"

#include <cstdint>
#include <string_view>

#include "Platform/Linux/Bus/BusMessage.h"

namespace platform {
namespace {

constexpr const char* kDriver = "org.freedesktop.DBus";
constexpr const char* kDriverPath = "/org/freedesktop/DBus";
constexpr std::uint64_t kLimitMicroseconds = 1'000'000;

bool equals(const char* text, std::string_view wanted) {
  return text != nullptr && wanted == text;
}

/// The user behind a unique name, by the bus's word.
std::optional<uid_t> userOf(sd_bus* bus, const char* name) {
  sd_bus_message* raw = nullptr;
  if (sd_bus_message_new_method_call(bus, &raw, kDriver, kDriverPath, kDriver,
                                     "GetConnectionUnixUser") < 0) {
    return std::nullopt;
  }
  const BusMessage question(raw);
  raw = nullptr;
  const bool isAnswered = sd_bus_message_append(question.get(), "s", name) >= 0 &&
                          sd_bus_call(bus, question.get(), kLimitMicroseconds, nullptr, &raw) >= 0;
  const BusMessage answer(raw);
  std::uint32_t user = 0;
  if (!isAnswered || !BusTrust::isFromBus(raw) || sd_bus_message_read(raw, "u", &user) < 0) {
    return std::nullopt;
  }
  return user;
}

}  // namespace

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
  const char* sender = sd_bus_message_get_sender(call);
  if (calls_ == Calls::ofNobody || sender == nullptr) return false;
  if (const auto known = remembered(sender)) return *known;
  sd_bus* const bus = sd_bus_message_get_bus(call);
  const char* own = nullptr;
  // The bus may see another number than the program does, as from outside of a container.
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
}

}  // namespace platform
