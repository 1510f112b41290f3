#pragma once

#include <QPointer>
#include <memory>

#include "Staylit/Desktop/Windows/FixedWindow.h"
#include "Staylit/UserInterface.h"

namespace staylit::windows {

/// A window as the program knows it. Where the window system places windows itself (Wayland), the
/// positions have no effect.
class QtWindow : public Window {
 public:
  /// This window sets `key` to itself when it is brought to the front. `key` must outlive it.
  QtWindow(std::unique_ptr<FixedWindow> window, QPointer<FixedWindow>& key);

  void setFrameOrigin(Point origin) override;
  void center() override;
  void makeKeyAndOrderFront() override;

  [[nodiscard]] FixedWindow& widget() { return *window_; }

 private:
  std::unique_ptr<FixedWindow> window_;
  QPointer<FixedWindow>& key_;
};

}  // namespace staylit::windows
