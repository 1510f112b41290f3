#pragma once

#import <AppKit/AppKit.h>

#import "Staylit/AppKit/StaylitStatusMenu.h"
#include "Staylit/UserInterface.h"

namespace staylit {

/// A status item of variable length in the system's menu bar, there as long as the object lives.
class AppKitStatusItem final : public StatusItem {
 public:
  explicit AppKitStatusItem(MenuDelegate& delegate);
  ~AppKitStatusItem() override;
  AppKitStatusItem(const AppKitStatusItem&) = delete;
  AppKitStatusItem& operator=(const AppKitStatusItem&) = delete;

  void show(const StatusItemAppearance& appearance) override;

 private:
  NSStatusItem* const item_;
  StaylitStatusMenu* const menu_;
};

}  // namespace staylit
