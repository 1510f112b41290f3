#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Bus/BusHandles.h"

namespace platform {

/// Offers one interface of one of the program's objects on a bus. As long as a `BusObject` exists,
/// it does so on every connection that the bus makes.
///
/// A connection on which the object cannot be offered is logged, and not tried again. A `BusObject`
/// never makes the bus connect. Main thread only. The bus, the table, and the object
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

  /// Offers the object on a connection that was made just now, when the loop may not yet have told
  /// of it.
  void offer();

  /// Sends a signal if there is a connection; otherwise the signal is lost. A signal that cannot be
  /// made or sent is logged and lost.
  void emit(const char* member, const Bus::Arguments& arguments = {});
  /// Announces the new values of the properties with these names, as `emit` does.
  void emitPropertiesChanged(std::vector<const char*> names);

 private:
  int send(sd_bus* bus, const char* member, const Bus::Arguments& arguments) const;
  void logFailure(const std::string& what, int result) const;

  Bus& bus_;
  Place place_;
  const sd_bus_vtable* table_;
  void* data_;
  std::uint64_t offeredOn_ = 0;  ///< The number of the connection; 0: none.
  BusSlot slot_;
  BusListening watch_;
};

}  // namespace platform
