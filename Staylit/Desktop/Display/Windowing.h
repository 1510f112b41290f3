#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Desktop/Display/DisplayTrial.h"
#include "Staylit/Desktop/Display/LoopGuard.h"
#include "Staylit/Desktop/Display/WindowsModule.h"

namespace staylit {

/// Loads the windows module when a window is first wanted.
///
/// Another process tries the display before the windows are loaded, because a display that does not
/// answer blocks whoever connects to it. Where no window can be shown, a desktop notification tells
/// the user why at each attempt, and the log tells the reason unless it is the same as the last
/// time. Main thread only; both arguments must outlive it.
class Windowing {
 public:
  Windowing(platform::EventLoop& loop, platform::Bus& sessionBus);
  Windowing(const Windowing&) = delete;
  Windowing& operator=(const Windowing&) = delete;

  /// The kit, which makes all windows; null while there is none. In that case this call begins to
  /// make the kit, and the loop calls each caller's `again` once the kit is there, in the order of
  /// the calls. Where no window can be shown, no `again` is called, and the user is told why, now
  /// or as soon as it is known. What `again` refers to must live until then, or as long as this.
  WindowKit* kit(std::function<void()> again);
  /// Null until the kit is made.
  WindowKit* kitIfAny() { return kit_.get(); }

  /// Why no window can be shown, as far as is known without trying the display; empty where one
  /// may be.
  std::string obstacle();

 private:
  /// In the source's English.
  struct Obstacle {
    const char* why;
    const char* remedy;
  };
  std::optional<Obstacle> findObstacle();
  void tryDisplay();
  void tried(const DisplayTrial::Verdict& verdict);
  void makeKit(const std::string& platform);
  void cannotShow(const char* why, const char* remedy);

  platform::EventLoop& loop_;
  platform::Bus& sessionBus_;
  std::unique_ptr<DisplayTrial> trial_;
  std::vector<std::function<void()>> waiting_;  ///< For the kit; empty once there is one.
  /// Lets the program end although a display blocks its main thread. Destroyed after the kit,
  /// because a display may also block the kit's end.
  std::optional<LoopGuard> guard_;
  std::unique_ptr<WindowKit> kit_;
  std::string lastLogged_;  ///< What the user was told last.
  std::string lastReason_;  ///< The last reason that the trial gave.
};

}  // namespace staylit
