#pragma once

#include <functional>
#include <memory>
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

/// The module's one function: a new kit, the caller's to destroy; null when there is no display
/// that it could use. There is one kit in a process, and its windows go before it.
using MakeWindowKit = WindowKit* (*)(const DrivenLoop& loop);

inline constexpr const char* kWindowsModule = "libstaylit-windows.so";
inline constexpr const char* kMakeWindowKit = "staylitMakeWindowKit";

}  // namespace staylit
