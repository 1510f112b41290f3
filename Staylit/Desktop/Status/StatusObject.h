#pragma once

#include <systemd/sd-bus.h>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Bus/BusObject.h"
#include "Staylit/Published.h"
#include "Staylit/StatusReporter.h"
#include "Staylit/UserInterface.h"

namespace staylit {

/// The status on the session bus, as `com.staylit.Status1`: properties that can be read, and
/// signals. Nothing can be changed through it.
///
/// It sends only when the reporter tells of a change, as with each change of the names; on a busy
/// machine that may be several times a minute. It makes a report only when somebody reads a
/// property. Does not connect the bus by itself. Main thread only; both arguments must outlive it.
class StatusObject : public StatusService {
 public:
  StatusObject(platform::Bus& bus, StatusReporter& reporter);

 private:
  static int property(sd_bus* bus, const char* path, const char* interface, const char* name,
                      sd_bus_message* reply, void* data, sd_bus_error* error);
  static const sd_bus_vtable kTable[];
  void announce();

  StatusReporter& reporter_;
  platform::BusObject object_;
  Subscription changes_;
};

}  // namespace staylit
