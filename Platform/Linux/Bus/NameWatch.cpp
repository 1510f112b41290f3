#include "Platform/Linux/Bus/NameWatch.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "Platform/Linux/Bus/BusHandles.h"
#include "Platform/Linux/Bus/BusTrust.h"

namespace platform {
namespace {

constexpr const char* kBusName = "org.freedesktop.DBus";
constexpr const char* kBusPath = "/org/freedesktop/DBus";

/// A bus that stood still answers when it goes on, however long that took.
constexpr std::uint64_t kWithoutLimit = UINT64_MAX;

}  // namespace

NameWatch::NameWatch(tidewell::MainLoop& loop, std::string name, Callback callback)
    : loop_(loop), name_(std::move(name)), callback_(std::move(callback)) {}

void NameWatch::connected(sd_bus* bus) {
  const std::string rule = std::string("type='signal',sender='") + kBusName + "',path='" +
                           kBusPath + "',interface='" + kBusName +
                           "',member='NameOwnerChanged',arg0='" + name_ + "'";
  sd_bus_slot* match = nullptr;
  sd_bus_add_match_async(bus, &match, rule.c_str(), ownerChanged, ignoreRefusal, this);
  match_ = BusSlot(match);
  // The question follows the match, so that no change can happen unseen in between.
  askForOwner(bus);
}

void NameWatch::askForOwner(sd_bus* bus) {
  sd_bus_message* raw = nullptr;
  sd_bus_message_new_method_call(bus, &raw, kBusName, kBusPath, kBusName, "GetNameOwner");
  const BusMessage question(raw);
  sd_bus_slot* query = nullptr;
  if (raw && sd_bus_message_append(raw, "s", name_.c_str()) >= 0) {
    sd_bus_call_async(bus, &query, raw, ownerTold, this, kWithoutLimit);
  }
  query_ = BusSlot(query);
}

void NameWatch::disconnected() {
  match_.reset();
  query_.reset();
  owner_.clear();
  known_.reset();
  if (reported_ != true) return;
  report(false);
  loop_.async([weak = weak_from_this(), this] {
    if (const BusListening keep = weak.lock()) deliver(keep);
  });
}

std::optional<bool> NameWatch::isOwned(std::string_view name) const {
  return name == name_ && match_ ? known_ : std::nullopt;
}

void NameWatch::learn(std::string_view name, bool owned) {
  if (name == name_ && match_ && !known_) known_ = owned;
}

bool NameWatch::isOwner(const char* sender) const {
  return sender != nullptr && !owner_.empty() && owner_ == sender;
}

int NameWatch::ownerChanged(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
  auto& self = *static_cast<NameWatch*>(data);
  const BusListening keep = self.shared_from_this();
  const char* name = nullptr;
  const char* before = nullptr;
  const char* after = nullptr;
  if (sd_bus_message_read(message, "sss", &name, &before, &after) < 0) return 0;
  self.owner_ = after;
  self.known_ = after[0] != '\0';
  // A replaced owner has lost what it granted, as an owner that left has.
  if (before[0] != '\0') self.report(false);
  if (after[0] != '\0') self.report(true);
  self.deliver(keep);
  return 0;
}

int NameWatch::ownerTold(sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
  auto& self = *static_cast<NameWatch*>(data);
  const BusListening keep = self.shared_from_this();
  if (!BusTrust::isFromBus(reply)) return 0;
  const char* owner = "";
  const bool isFree = sd_bus_message_is_method_error(reply, SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0;
  if (!isFree && sd_bus_message_is_method_error(reply, nullptr) > 0) return 0;
  if (!isFree && sd_bus_message_read(reply, "s", &owner) < 0) return 0;
  self.owner_ = owner;
  self.known_ = !isFree;
  if (self.reported_ != self.known_) self.report(!isFree);
  self.deliver(keep);
  return 0;
}

void NameWatch::report(bool owned) {
  reported_ = owned;
  undelivered_.push_back(owned);
}

void NameWatch::deliver(const BusListening& keep) {
  // The callback may drop the watch, and with it everything that a further call would touch.
  while (!undelivered_.empty() && keep.use_count() > 1) {
    const bool owned = undelivered_.front();
    undelivered_.pop_front();
    if (callback_) callback_(owned);
  }
}

}  // namespace platform
