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

/// Loads the windows module when a window is first wanted.
///
/// A display never makes the loop wait, because another process tries it first. Where no window can
/// be shown, a desktop notification tells the user why at each attempt, and a line in the log tells
/// each reason once. Main thread only; both arguments must outlive it.
class Windowing {
 public:
  Windowing(platform::EventLoop& loop, platform::Bus& sessionBus);
  Windowing(const Windowing&) = delete;
  Windowing& operator=(const Windowing&) = delete;

  /// The kit, or null while there is none. In that case this call begins to make the kit, and the
  /// loop calls `again` once it is there. When several callers wait, only the last one's `again` is
  /// called. Where no window can be shown, `again` is not called, and the user is told why, now or
  /// as soon as it is known. The kit drives the loop from the loop's next run on.
  WindowKit* kit(std::function<void()> again);
  /// Null until the kit is made.
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
  /// Destroyed after the kit, because a display may also block the kit's end.
  std::optional<LoopGuard> guard_;
  std::unique_ptr<WindowKit> kit_;
  std::string lastLogged_;
  std::string lastReason_;
};

}  // namespace staylit
