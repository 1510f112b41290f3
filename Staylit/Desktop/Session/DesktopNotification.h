#pragma once

#include <string>

#include "Platform/Linux/Bus/Bus.h"

namespace staylit {

struct DesktopNotification {
  std::string summary;  ///< One line.
  std::string body;     ///< Characters that look like markup are shown as they are.
};

/// Asks the desktop to show a notification to the user, and does not wait. Nothing happens where no
/// service can show it.
void showNotification(platform::Bus& sessionBus, const DesktopNotification& notification);

}  // namespace staylit
