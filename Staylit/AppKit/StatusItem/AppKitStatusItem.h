#pragma once

#import <AppKit/AppKit.h>

#include <optional>

#import "Staylit/AppKit/Menu/StaylitStatusMenu.h"
#include "Staylit/UserInterface.h"

namespace staylit {

/// A status item of variable length in the system's menu bar, and the main menu that nobody sees.
/// Both are there as long as the object lives.
class AppKitStatusItem final : public StatusItem {
 public:
  explicit AppKitStatusItem(MenuDelegate& delegate);
  ~AppKitStatusItem() override;
  AppKitStatusItem(const AppKitStatusItem&) = delete;
  AppKitStatusItem& operator=(const AppKitStatusItem&) = delete;

  /// Changes only what differs, so that the menu bar is not drawn anew with every tick.
  void show(const StatusItemAppearance& appearance) override;

 private:
  NSStatusItem* const item_;
  StaylitStatusMenu* const menu_;
  std::optional<StatusItemAppearance> shown_;
};

}  // namespace staylit
