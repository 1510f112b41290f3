#pragma once

#import "Staylit/AppKit/Windows/StaylitWindow.h"
#include "Staylit/UserInterface.h"

namespace staylit {

/// A window and its content. The portable view that the content draws must outlive the window.
/// AppKit may keep the window's objects a little longer.
class AppKitWindow final : public Window {
 public:
  AppKitWindow(const WindowStyle& style, NSView<StaylitWindowContent>* content);
  ~AppKitWindow() override;
  AppKitWindow(const AppKitWindow&) = delete;
  AppKitWindow& operator=(const AppKitWindow&) = delete;

  void setFrameOrigin(Point origin) override;
  void center() override;
  void makeKeyAndOrderFront() override;

 private:
  NSView<StaylitWindowContent>* const content_;
  StaylitWindow* const window_;
};

}  // namespace staylit
