#pragma once

#include <memory>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Desktop/WindowsModule.h"

namespace staylit {

/// Fetches the windows module when a window is first wanted.
///
/// Where that cannot be, it tells the user why in a desktop notification at each attempt, and the
/// log once a reason. Main thread only; both arguments must outlive it.
class Windowing {
 public:
  Windowing(platform::EventLoop& loop, platform::Bus& sessionBus);
  Windowing(const Windowing&) = delete;
  Windowing& operator=(const Windowing&) = delete;

  /// The kit, made now if there is none; it drives the loop from the next time that the loop runs
  /// on. Null when no window can be shown, of which the user has been told.
  WindowKit* kit();
  /// Null as long as none has been made.
  WindowKit* kitIfAny() { return kit_.get(); }

 private:
  void makeKit();
  void cannotShow(const std::string& why, const std::string& remedy);

  platform::EventLoop& loop_;
  platform::Bus& sessionBus_;
  std::unique_ptr<WindowKit> kit_;
  std::string lastLogged_;
};

}  // namespace staylit
