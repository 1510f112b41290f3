#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace platform {

/// Gives up what a handle owns.
template <auto giveUp>
struct BusRelease {
  template <typename Object>
  void operator()(Object* object) const {
    giveUp(object);
  }
};

/// Owns a connection and closes it without waiting. Move-only. Only the thread of the connection's
/// loop may use it. No handler of the connection may destroy it.
using BusConnection = std::unique_ptr<sd_bus, BusRelease<sd_bus_close_unref>>;

/// Owns a reference to a bus message. Move-only. Only the bus's thread may use it. Texts and
/// descriptors that are read from the message live as long as the message.
using BusMessage = std::unique_ptr<sd_bus_message, BusRelease<sd_bus_message_unref>>;

/// Owns a registration with a bus connection: a match, a pending call or an object. The
/// registration ends with its owner. Move-only. Only the bus's thread may use it. The
/// registration's own handler may destroy its owner.
using BusSlot = std::unique_ptr<sd_bus_slot, BusRelease<sd_bus_slot_unref>>;

}  // namespace platform
