#pragma once

#include <optional>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Desktop/Control/ControlRequest.h"
#include "Staylit/Desktop/Session/UserLock.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/Console.h"

namespace staylit {

/// The Staylit that runs in the session, as another start of the program commands it. Starts none.
///
/// It prints what was done, or says on standard error why nothing was. Main thread only; all
/// arguments must outlive it.
class RunningStaylit {
 public:
  /// With which the program ends.
  enum Exit : int { done = 0, trouble = 2, noneRuns = 3 };

  RunningStaylit(platform::EventLoop& loop, platform::Bus& sessionBus, tidewell::Console& console,
                 tidewell::Clock& clock);
  RunningStaylit(const RunningStaylit&) = delete;
  RunningStaylit& operator=(const RunningStaylit&) = delete;

  /// Waits some seconds at most. Returns the status with which to end.
  int obey(const ControlRequest& request);

 private:
  int foundNone(const ControlRequest& request);
  platform::BusReply ask(const ControlRequest& request);
  int tell(const ControlRequest& request, const platform::BusReply& reply);
  std::string whatWasDone(const ControlRequest& request, sd_bus_message* reply);
  int quit();
  int say(const std::string& text);
  int fail(const std::string& why);

  platform::EventLoop& loop_;
  platform::Bus& bus_;
  tidewell::Console& console_;
  tidewell::Clock& clock_;
  UserLock lock_;
};

}  // namespace staylit
