#pragma once

#include <optional>
#include <string>

#include "Tidewell/Ports/LoginItem.h"

namespace platform {

/// The application's own entry in the list of login items in System Settings.
class MainAppLoginItem final : public tidewell::LoginItem {
 public:
  std::optional<std::string> registerItem() override;
  std::optional<std::string> unregisterItem() override;
};

}  // namespace platform
