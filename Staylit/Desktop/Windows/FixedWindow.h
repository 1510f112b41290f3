#pragma once

#include <QWidget>
#include <functional>

#include "Staylit/UserInterface.h"

namespace staylit::windows {

/// The size of a window's content that should have the size `wanted`, on a screen with `room` for
/// windows. It is smaller only where `wanted` would not fit, and the title bar then stays in sight.
QSize fittingSize(QSize wanted, QSize room);

/// A window with a title and a close button, of one size. Escape and Ctrl+W close it; closing only
/// hides it.
class FixedWindow : public QWidget {
 public:
  explicit FixedWindow(const WindowStyle& style);

  /// Fills the window with the widget, and takes the widget over.
  void setContent(QWidget* content);

  /// Called on Escape before the window closes; returns true when there was something smaller to
  /// undo.
  void setOnEscape(std::function<bool()> onEscape) { onEscape_ = std::move(onEscape); }

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  std::function<bool()> onEscape_;
};

}  // namespace staylit::windows
