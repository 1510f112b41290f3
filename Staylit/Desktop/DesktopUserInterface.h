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
/// windows module, which is loaded when the first one is opened. Main thread only. Both arguments
/// must outlive it, and it must outlive the windows and items that it makes.
class DesktopUserInterface : public UserInterface {
 public:
  DesktopUserInterface(platform::EventLoop& loop, platform::Bus& sessionBus);

  /// The first window comes a moment after it is asked for. As long as no window can be made, the
  /// two windows' functions return null; when one can be made, they choose the menu's item for it
  /// once more.
  std::unique_ptr<StatusItem> makeStatusItem(MenuDelegate& delegate) override;
  std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) override;
  std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style, SettingsView& view) override;
  std::vector<Rect> visibleFrames() override;
  void activate() override;
  void tell(const std::string& summary, const std::string& body) override;
  void terminate() override;

  /// Does what the menu's item with `action` does; nothing as long as there is no menu.
  void choose(MenuItem::Action action);

  /// Null until the first window is opened.
  WindowKit* windowKit() { return windowing_.kitIfAny(); }

 private:
  platform::EventLoop& loop_;
  platform::Bus& sessionBus_;
  Windowing windowing_;
  tidewell::WeakReference<MenuDelegate> delegate_;  ///< The status item's, while that exists.
};

}  // namespace staylit
