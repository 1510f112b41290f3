#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Desktop/Display/DisplayTrial.h"
#include "Staylit/Desktop/Display/LoopGuard.h"
#include "Staylit/Desktop/Display/WindowsModule.h"

namespace staylit {

/// Fetches the windows module when a window is first wanted.
///
/// Nothing that a display does keeps the loop waiting: it is tried in another process first. Where
/// no window can be shown, the user is told why in a desktop notification at each attempt, and the
/// log once a reason. Main thread only; both arguments must outlive it.
class Windowing {
 public:
  Windowing(platform::EventLoop& loop, platform::Bus& sessionBus);
  Windowing(const Windowing&) = delete;
  Windowing& operator=(const Windowing&) = delete;

  /// The kit. Null while there is none: it is made then, and `again` is called from the loop once
  /// it is there. The kit drives the loop from the next time that the loop runs on. Where no window
  /// can be shown `again` is not called, but the user has been told, or is as soon as it is known.
  /// Of several that wait, the last is called.
  WindowKit* kit(std::function<void()> again);
  /// Null as long as none has been made.
  WindowKit* kitIfAny() { return kit_.get(); }

 private:
  void tryDisplay();
  void tried(const DisplayTrial::Verdict& verdict);
  void makeKit(const std::string& platform);
  void cannotShow(const std::string& why, const std::string& remedy);

  platform::EventLoop& loop_;
  platform::Bus& sessionBus_;
  std::unique_ptr<DisplayTrial> trial_;
  std::function<void()> again_;
  std::optional<LoopGuard> guard_;  ///< Goes after the kit, whose end a display may hold up too.
  std::unique_ptr<WindowKit> kit_;
  std::string lastLogged_;
  std::string lastReason_;
};

}  // namespace staylit
