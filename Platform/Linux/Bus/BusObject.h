#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <functional>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Bus/BusHandles.h"

namespace platform {

/// Offers one interface of one of the program's objects on a bus. As long as a `BusObject` exists,
/// it does so on every connection that the bus makes.
///
/// A `BusObject` never makes the bus connect. Main thread only. The bus, the table, and the object
/// that the table's handlers get (`data`) must outlive it.
class BusObject {
 public:
  struct Place {
    std::string path;
    std::string interface;
  };

  BusObject(Bus& bus, Place place, const sd_bus_vtable* table, void* data);
  BusObject(const BusObject&) = delete;
  BusObject& operator=(const BusObject&) = delete;

  /// Offers the object on a connection that was made just now, without waiting until the loop tells
  /// of the connection.
  void offer();

  /// Sends a signal if there is a connection; otherwise the signal is lost.
  void emit(const char* member, const Bus::Arguments& arguments = {});
  /// Announces the new values of the properties with these names. The list of names ends with a
  /// null.
  void emitPropertiesChanged(const char* const* names);

 private:
  Bus& bus_;
  Place place_;
  const sd_bus_vtable* table_;
  void* data_;
  std::uint64_t connection_ = 0;
  BusSlot slot_;
  BusListening watch_;
};

}  // namespace platform
