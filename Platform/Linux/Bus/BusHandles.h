#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace platform {

// Only the thread that runs the bus's loop may use these handles. All are move-only.

/// Releases what a handle owns.
template <auto release>
struct BusRelease {
  template <typename Object>
  void operator()(Object* object) const {
    release(object);
  }
};

/// Owns a connection and closes it without waiting: messages that still wait to be sent are lost.
/// No handler of the connection may destroy it.
using BusConnection = std::unique_ptr<sd_bus, BusRelease<sd_bus_close_unref>>;

/// Owns a reference to a bus message. Texts and descriptors that are read from the message live as
/// long as the message.
using BusMessage = std::unique_ptr<sd_bus_message, BusRelease<sd_bus_message_unref>>;

/// Owns a registration with a bus connection: a match, a pending call or an object. The
/// registration ends with its owner. The owner may outlive the connection's owner; the registration
/// is then without effect. The registration's own handler may destroy its owner.
using BusSlot = std::unique_ptr<sd_bus_slot, BusRelease<sd_bus_slot_unref>>;

}  // namespace platform
