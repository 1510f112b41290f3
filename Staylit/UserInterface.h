#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Staylit/Menu.h"

namespace staylit {

class AppsView;
class PauseControl;
class SettingsView;
class StatusReporter;

/// In points, with the system's own origin and direction.
struct Point {
  double x = 0;
  double y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
  double width = 0;
  double height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
  Point origin;
  Size size;
  [[nodiscard]] Point center() const {
    return {origin.x + size.width / 2, origin.y + size.height / 2};
  }
  friend bool operator==(const Rect&, const Rect&) = default;
};

/// What a status item looks like.
struct StatusItemAppearance {
  std::string symbol;  ///< A system symbol name; its image follows the panel's colours.
  std::string accessibilityDescription;
  bool appearsDisabled = false;
  std::string toolTip;

  friend bool operator==(const StatusItemAppearance&, const StatusItemAppearance&) = default;
};

/// The program's place in the system's menu bar or panel. Main thread only.
class StatusItem {
 public:
  virtual ~StatusItem() = default;
  virtual void show(const StatusItemAppearance& appearance) = 0;
  /// The menu has other rows, other check marks or another state than before; other figures in the
  /// same rows are no such change. For systems that show a menu which they asked for earlier.
  virtual void menuChanged() {}
};

/// Fills the status item's menu and hears what is chosen. Main thread only.
class MenuDelegate {
 public:
  virtual ~MenuDelegate() = default;
  /// Makes the whole menu afresh; called whenever the menu is about to open.
  virtual Menu menuNeedsUpdate() = 0;
  /// The user chose one of the items that `menuNeedsUpdate` returned. Harmless for any other item.
  virtual void perform(const MenuItem& item) = 0;
};

/// A titled window that can be closed, but neither resized nor minimised. Closing only hides it.
/// Main thread only.
class Window {
 public:
  virtual ~Window() = default;
  virtual void setFrameOrigin(Point origin) = 0;
  /// Puts the window where the window system centres windows.
  virtual void center() = 0;
  virtual void makeKeyAndOrderFront() = 0;
};

/// The program's answer to other programs that ask for its status, for as long as it exists. Main
/// thread only.
class StatusService {
 public:
  StatusService() = default;
  virtual ~StatusService() = default;
  StatusService(const StatusService&) = delete;
  StatusService& operator=(const StatusService&) = delete;
};

/// The program's obedience to other programs of the user that pause and resume it, for as long as
/// it exists. Main thread only.
class ControlService {
 public:
  ControlService() = default;
  virtual ~ControlService() = default;
  ControlService(const ControlService&) = delete;
  ControlService& operator=(const ControlService&) = delete;
};

/// The properties that a window of either kind is made with.
struct WindowStyle {
  std::string title;
  Size contentSize;
};

/// The part of the window system, and of what programs offer each other there, that the program
/// needs. Main thread only.
class UserInterface {
 public:
  virtual ~UserInterface() = default;

  /// `delegate` must outlive the item. Null where the system has no place for an item.
  virtual std::unique_ptr<StatusItem> makeStatusItem(MenuDelegate& delegate) = 0;

  /// `reporter` must outlive the service. Null where the system has no way to ask.
  virtual std::unique_ptr<StatusService> offerStatus(StatusReporter& reporter) = 0;

  /// `pause` must outlive the service. Null where other programs cannot pause this one.
  virtual std::unique_ptr<ControlService> offerControl(PauseControl& pause) = 0;

  /// Both return null when no window can be shown, and then the user is told why. They also return
  /// null while it is not yet known whether a window can be shown. As soon as one can, the menu's
  /// item is chosen once more. The view must outlive the window.
  virtual std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) = 0;
  virtual std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style,
                                                     SettingsView& view) = 0;

  /// The area of each screen that windows can cover, the main screen's first; empty where the
  /// system does not tell.
  virtual std::vector<Rect> visibleFrames() = 0;

  /// Brings the program's windows to the front.
  virtual void activate() = 0;

  /// Tells the user something that no window shows, for example by a notification. Does not wait.
  virtual void tell(const std::string& summary, const std::string& body) = 0;

  /// Ends the program in order.
  virtual void terminate() = 0;
};

}  // namespace staylit
