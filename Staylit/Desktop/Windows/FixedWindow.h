#pragma once

#include <QWidget>
#include <functional>

#include "Staylit/UserInterface.h"

namespace staylit::windows {

/// The size of a window's content that is to have the size `wanted`, on a screen with that much
/// room for windows: smaller only where it would not fit, and then with its title bar in sight.
QSize fittingSize(QSize wanted, QSize room);

/// A window with a title and a close button, of one size. Escape and Ctrl+W close it, which only
/// hides it.
class FixedWindow : public QWidget {
 public:
  explicit FixedWindow(const WindowStyle& style);

  /// Fills the window. Takes it over.
  void setContent(QWidget* content);

  /// Asked on Escape before the window closes; true when there was something smaller to undo.
  void setOnEscape(std::function<bool()> onEscape) { onEscape_ = std::move(onEscape); }

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  std::function<bool()> onEscape_;
};

}  // namespace staylit::windows
