#pragma once

#include <string>

#include "Platform/Linux/Bus/Bus.h"

namespace staylit {

struct DesktopNotification {
  std::string summary;  ///< One line.
  std::string body;     ///< What looks like markup in it is shown as it stands.
};

/// Asks the desktop to show something to the user. Nothing happens where nobody can; nobody waits
/// for it.
void showNotification(platform::Bus& sessionBus, const DesktopNotification& notification);

}  // namespace staylit
