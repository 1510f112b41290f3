#pragma once

#include <QWidget>
#include <functional>

#include "Staylit/Desktop/Windows/Parts/Spoken.h"
#include "Staylit/UserInterface.h"

namespace staylit::windows {

/// The size of a window's content on a screen with `room` for windows: `wanted`, or what of it fits
/// so that the title bar stays in sight.
QSize fittingSize(QSize wanted, QSize room);

/// A window with a title and a close button, of a size that the user cannot change. Escape and
/// Ctrl+W close it; closing only hides it.
class FixedWindow : public QWidget, public Spoken {
 public:
  explicit FixedWindow(const WindowStyle& style);

  /// Fills the window with the widget, and takes the widget over.
  void setContent(QWidget* content);
  /// Makes the window higher where the content needs more than its height, as far as the screen
  /// has room.
  void growTo(int contentHeight);

  /// `onEscape` is called when the user presses Escape. When it returns true, it has undone
  /// something smaller, and the window stays open.
  void setOnEscape(std::function<bool()> onEscape) { onEscape_ = std::move(onEscape); }

  [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Window; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QSize wanted_;
  std::function<bool()> onEscape_;
};

}  // namespace staylit::windows
