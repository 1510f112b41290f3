#include "Platform/Linux/Sleep/CookieInhibition.h"

#include <cerrno>
#include <memory>
#include <utility>

namespace platform {

CookieInhibition::CookieInhibition(Bus& bus, const BusMethod& release, std::string granter,
                                   std::uint32_t cookie)
    : bus_(bus),
      release_(release),
      granter_(std::move(granter)),
      cookie_(cookie),
      connectionNumber_(bus.connectionNumber()) {}

CookieInhibition::~CookieInhibition() {
  if (connectionNumber_ != bus_.connectionNumber()) return;
  BusMethod method = release_;
  method.destination = granter_.c_str();
  bus_.send(method, [this](sd_bus_message* message) {
    return sd_bus_message_append(message, "u", cookie_);
  });
}

InhibitMechanism::Taken CookieInhibition::fromReply(Bus& bus, const BusMethod& release,
                                                    sd_bus_message* reply) {
  std::uint32_t cookie = 0;
  if (const int result = sd_bus_message_read(reply, "u", &cookie); result < 0) {
    return {result, nullptr};
  }
  const char* granter = sd_bus_message_get_sender(reply);
  if (granter == nullptr) return {-EBADMSG, nullptr};
  return {0, std::unique_ptr<Inhibition>(new CookieInhibition(bus, release, granter, cookie))};
}

InhibitMechanism::Taken CookieInhibition::take(Bus& bus, const BusMethod& inhibit,
                                               const Bus::Arguments& arguments,
                                               const char* releaseMember,
                                               InhibitMechanism::Late late) {
  BusMethod release = inhibit;
  release.member = releaseMember;
  const BusReply reply = bus.call(
      inhibit, arguments, [&bus, release, late = std::move(late)](const BusMessage& message) {
        auto taken = fromReply(bus, release, message.get());
        if (taken.inhibition) late(std::move(taken.inhibition));
      });
  if (!reply) return {reply.error, nullptr};
  return fromReply(bus, release, reply.message.get());
}

}  // namespace platform
