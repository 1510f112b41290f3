#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Staylit/Menu.h"

namespace staylit {

class AppsView;
class SettingsView;

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
};

/// Fills the status item's menu and hears what is chosen. Main thread only.
class MenuDelegate {
 public:
  virtual ~MenuDelegate() = default;
  /// The whole menu, made afresh; asked whenever it is about to open.
  virtual Menu menuNeedsUpdate() = 0;
  /// One of the items that `menuNeedsUpdate` gave was chosen. Harmless for any other.
  virtual void perform(const MenuItem& item) = 0;
};

/// A titled window that can be closed and neither resized nor minimized. Closing it only hides it.
/// Main thread only.
class Window {
 public:
  virtual ~Window() = default;
  virtual void setFrameOrigin(Point origin) = 0;
  /// Puts it where the window system centres windows.
  virtual void center() = 0;
  virtual void makeKeyAndOrderFront() = 0;
};

/// What a window of either kind is made with.
struct WindowStyle {
  std::string title;
  Size contentSize;
};

/// The window system, as far as the program needs it. Main thread only.
class UserInterface {
 public:
  virtual ~UserInterface() = default;

  /// `delegate` must outlive the item. Null where the system has no place for one.
  virtual std::unique_ptr<StatusItem> makeStatusItem(MenuDelegate& delegate) = 0;

  /// Null when no window can be shown; the system tells the user why then. Null as well when that
  /// is not known yet; the menu's item is chosen once more as soon as a window can be made. The
  /// view must outlive the window.
  virtual std::unique_ptr<Window> makeAppsWindow(const WindowStyle& style, AppsView& view) = 0;
  virtual std::unique_ptr<Window> makeSettingsWindow(const WindowStyle& style,
                                                     SettingsView& view) = 0;

  /// What windows can cover of each screen, the main screen's first; empty where that cannot be
  /// told.
  virtual std::vector<Rect> visibleFrames() = 0;

  /// Brings the program before all others.
  virtual void activate() = 0;

  /// Tells the user, who may be elsewhere, of something that no window shows. Does not wait.
  virtual void tell(const std::string& summary, const std::string& body) = 0;

  /// Ends the program in order.
  virtual void terminate() = 0;
};

}  // namespace staylit
