#pragma once

#include "Tidewell/Ports/LoginItem.h"

namespace platform {

/// The application's own entry in the list of login items in System Settings.
class MainAppLoginItem final : public tidewell::LoginItem {
 public:
  Failure registerItem() override;
  Failure unregisterItem() override;
};

}  // namespace platform
