#include "Staylit/Desktop/Windows/QtWindow.h"

#include <QScreen>
#include <utility>

namespace staylit::windows {

QtWindow::QtWindow(std::unique_ptr<FixedWindow> window, QPointer<FixedWindow>& key)
    : window_(std::move(window)), key_(key) {}

void QtWindow::setFrameOrigin(Point origin) {
  window_->move(qRound(origin.x), qRound(origin.y));
}

void QtWindow::center() {
  const QScreen* screen = window_->screen();
  if (!screen) return;
  QRect frame = window_->frameGeometry();
  frame.moveCenter(screen->availableGeometry().center());
  window_->move(frame.topLeft());
}

void QtWindow::makeKeyAndOrderFront() {
  // A window manager may minimise a window that does not offer it.
  window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
  window_->show();
  window_->raise();
  window_->activateWindow();
  key_ = window_.get();
}

}  // namespace staylit::windows
