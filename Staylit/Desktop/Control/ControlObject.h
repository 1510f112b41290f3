#pragma once

#include <systemd/sd-bus.h>

#include <functional>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Bus/BusObject.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/PauseControl.h"
#include "Staylit/UserInterface.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// The interface `com.staylit.Control1` as it stands on the bus. What a name of it means never
/// changes, and new methods may be added; anything else is `com.staylit.Control2`.
struct ControlInterface {
  static constexpr const char* kPath = "/com/staylit/Control";
  static constexpr const char* kName = "com.staylit.Control1";
};

/// Lets other programs of the user pause and resume this one, and tells them what was done.
///
/// Each call is obeyed from the loop, never inside a call from the bus, and answered after that.
/// Does not connect the bus by itself. Main thread only; all arguments must outlive it.
class ControlObject : public ControlService {
 public:
  ControlObject(platform::EventLoop& loop, platform::Bus& bus, PauseControl& pause);

 private:
  using Answer = std::function<int(sd_bus_message*)>;

  static int pauseFor(sd_bus_message* call, void* data, sd_bus_error* error);
  static int resume(sd_bus_message* call, void* data, sd_bus_error* error);
  static int togglePause(sd_bus_message* call, void* data, sd_bus_error* error);
  static const sd_bus_vtable kTable[];
  int answerLater(sd_bus_message* call, const Answer& answer);

  platform::EventLoop& loop_;
  PauseControl& pause_;
  platform::BusObject object_;
  tidewell::WeakReferenceSource<ControlObject> self_{*this};  ///< For work that is posted.
};

}  // namespace staylit
