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

/// The one owner of a connection, which it closes without waiting. Move-only; the thread of the
/// connection's loop only. None of the connection's own handlers may destroy it.
using BusConnection = std::unique_ptr<sd_bus, BusRelease<sd_bus_close_unref>>;

/// The one owner of a reference to a bus message. Move-only; the bus's thread only. Texts and
/// descriptors that are read from the message live as long as the message.
using BusMessage = std::unique_ptr<sd_bus_message, BusRelease<sd_bus_message_unref>>;

/// The one owner of a registration with a bus connection (a match, a pending call, an object),
/// which ends with it. Move-only; the bus's thread only. The registration's own handler may destroy
/// it.
using BusSlot = std::unique_ptr<sd_bus_slot, BusRelease<sd_bus_slot_unref>>;

}  // namespace platform
