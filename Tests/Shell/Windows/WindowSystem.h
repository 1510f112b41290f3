#pragma once

#include <QWidget>

#include "Staylit/Desktop/Display/WindowsModule.h"

namespace staylit {

/// The only window kit of the process, and the loop that the kit drives. The module's own entry
/// makes the kit, on Qt's platform without a display. The loop does nothing until a test gives it
/// work.
class WindowSystem {
 public:
  static WindowSystem& shared();

  WindowKit& kit() { return *kit_; }
  /// Tells the kit that the loop has work.
  void wake();

  std::function<void()> onPump;
  bool isStopping = false;
  int pumps = 0;

 private:
  WindowSystem();
  void pump();

  int descriptor_;
  std::unique_ptr<WindowKit> kit_;
};

/// The widget of the window with this title, hidden or shown.
QWidget* findWindow(const QString& title);

}  // namespace staylit
