#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Staylit/UserInterface.h"

namespace staylit {

/// What the windows module needs of the program's event loop, which it drives from then on.
struct DrivenLoop {
  int descriptor = -1;         ///< Readable when there is something to pump.
  std::function<void()> pump;  ///< Handles what is ready without waiting.
  std::function<bool()>
      isStopping;  ///< Whether the program is to end; to be asked after each pump.
};

/// What the windows module offers: windows, and the loop that they need. Main thread only.
///
/// The module links nothing of the program: what it needs of it comes through virtual functions.
class WindowKit {
 public:
  virtual ~WindowKit() = default;

  /// Runs until the driven loop is stopping.
  virtual void run() = 0;

  virtual std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) = 0;
  virtual std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style,
                                                     SettingsView& view) = 0;
  /// The main screen's first.
  virtual std::vector<Rect> visibleFrames() = 0;
  virtual void activate() = 0;
};

/// The module has two functions, under names that only the program of the same build knows (see
/// `platform::loadFromModule`).
///
/// The first tries the display as the second will use it, and takes as long as the display takes,
/// for ever if need be; it may also take the process down. So it is for a process that is there for
/// that alone. `found` is called while the display is connected, with the name of the platform that
/// is to be used. Without that call there is no display that could be used; why, is said on
/// standard error.
using TryDisplay = void (*)(const std::function<void(const std::string& platform)>& found);

/// A new kit on such a platform, the caller's to destroy; null when the display is somebody else's.
/// There is one kit in a process, and its windows go before it.
using MakeWindowKit = WindowKit* (*)(const DrivenLoop& loop, const std::string& platform);

inline constexpr const char* kWindowsModule = "libstaylit-windows.so";
inline constexpr const char* kTryDisplay = "staylitTryDisplay";
inline constexpr const char* kMakeWindowKit = "staylitMakeWindowKit";

}  // namespace staylit
