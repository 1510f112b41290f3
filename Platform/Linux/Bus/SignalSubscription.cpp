#include "Platform/Linux/Bus/SignalSubscription.h"

#include <utility>

namespace platform {

SignalSubscription::SignalSubscription(BusSignal signal, std::shared_ptr<const NameWatch> sender,
                                       Callback callback)
    : signal_(std::move(signal)), sender_(std::move(sender)), callback_(std::move(callback)) {}

void SignalSubscription::connected(sd_bus* bus) {
  sd_bus_slot* slot = nullptr;
  sd_bus_match_signal_async(bus, &slot, signal_.sender.c_str(), signal_.path.c_str(),
                            signal_.interface.c_str(), signal_.member.c_str(), received,
                            ignoreRefusal, this);
  match_ = BusSlot(slot);
}

void SignalSubscription::disconnected() {
  match_.reset();
}

int SignalSubscription::received(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
  auto& self = *static_cast<SignalSubscription*>(data);
  if (!self.sender_->isOwner(sd_bus_message_get_sender(message))) return 0;
  const BusListening keep = self.shared_from_this();
  self.callback_(message);
  return 0;
}

}  // namespace platform
