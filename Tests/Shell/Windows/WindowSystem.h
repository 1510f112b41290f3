#pragma once

#include <QWidget>

#include "Staylit/Desktop/Display/WindowsModule.h"

namespace staylit {

/// The process's one window kit, under Qt's platform without a display, made through the module's
/// own entry; and the loop that it drives, which does nothing until a test gives it something.
class WindowSystem {
 public:
  static WindowSystem& shared();

  WindowKit& kit() { return *kit_; }
  /// Something is ready for the loop.
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

/// The widget of the window of this title, hidden or shown.
QWidget* findWindow(const QString& title);

}  // namespace staylit
