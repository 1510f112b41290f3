#pragma once

#include <memory>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Desktop/Display/Windowing.h"
#include "Staylit/UserInterface.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// The program on a Linux desktop: the status item on the session bus, and the windows from the
/// windows module, which is loaded when the first window is opened. Main thread only. Both
/// arguments must outlive it, and it must outlive the windows and items that it makes.
class DesktopUserInterface : public UserInterface {
 public:
  DesktopUserInterface(platform::EventLoop& loop, platform::Bus& sessionBus);

  /// The first window comes a moment after it is asked for: the functions that make windows return
  /// null until the module is loaded, and then choose the menu's item for the window once more.
  std::unique_ptr<StatusItem> makeStatusItem(MenuDelegate& delegate) override;
  std::unique_ptr<StatusService> offerStatus(StatusReporter& reporter) override;
  std::unique_ptr<ControlService> offerControl(PauseControl& pause) override;
  std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) override;
  std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style, SettingsView& view) override;
  std::vector<Rect> visibleFrames() override;
  void activate() override;
  void tell(const std::string& summary, const std::string& body) override;
  void terminate() override;

  /// Does what the menu's item with `action` does. Does nothing while there is no menu.
  void choose(MenuItem::Action action);

  /// Why no window can be shown, as far as is known without trying; empty where one may be.
  std::string obstacleToWindows() { return windowing_.obstacle(); }

  /// Null until the first window is opened.
  WindowKit* windowKit() { return windowing_.kitIfAny(); }

 private:
  platform::EventLoop& loop_;
  platform::Bus& sessionBus_;
  Windowing windowing_;
  tidewell::WeakReference<MenuDelegate> delegate_;  ///< Of the status item, while it exists.
};

}  // namespace staylit
