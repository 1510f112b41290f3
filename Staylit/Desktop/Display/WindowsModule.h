#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Staylit/UserInterface.h"
#include "Tidewell/Words.h"

namespace staylit {

/// What the windows module needs of the program's event loop. From its loading on, the module
/// drives that loop.
struct DrivenLoop {
  int descriptor = -1;         ///< Readable when there is something to pump.
  std::function<void()> pump;  ///< Handles what is ready without waiting.
  /// Whether the program is to end. Ask it after each pump.
  std::function<bool()> isStopping;
};

/// What the windows module offers: windows, and the loop that windows need. Main thread only.
///
/// The module links nothing of the program. It reaches the program only through virtual functions.
class WindowKit {
 public:
  virtual ~WindowKit() = default;

  /// Runs until the driven loop is stopping.
  virtual void run() = 0;

  virtual std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) = 0;
  virtual std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style,
                                                     SettingsView& view) = 0;
  /// Starts with the main screen.
  virtual std::vector<Rect> visibleFrames() = 0;
  virtual void activate() = 0;
};

/// The module has two functions. Their names are known only to the program of the same build (see
/// `platform::loadFromModule`).
///
/// The first function tries the display as the second will use it. It takes as long as the display
/// takes, even for ever, and it may end the process. So only a process that exists for the trial
/// may call it. It calls `found` while the display is connected, with the name of the platform to
/// use. If it does not call `found`, no display can be used, and standard error says why.
using TryDisplay = void (*)(const std::function<void(const std::string& platform)>& found);

/// Makes a kit on such a platform, which the caller is to destroy. Its own texts are translated by
/// `translator`, which may be null. Null when the display belongs to somebody else. There is one
/// kit in a process, and its windows are destroyed before it.
using MakeWindowKit = WindowKit* (*)(const DrivenLoop& loop, const std::string& platform,
                                     std::shared_ptr<const tidewell::Translator> translator);

inline constexpr const char* kWindowsModule = "libstaylit-windows.so";
inline constexpr const char* kTryDisplay = "staylitTryDisplay";
inline constexpr const char* kMakeWindowKit = "staylitMakeWindowKit";

}  // namespace staylit
