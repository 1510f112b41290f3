#include "Staylit/Desktop/Session/DesktopNotification.h"

#include "Tidewell/ForeignText.h"

namespace staylit {
namespace {

constexpr platform::BusMethod kNotify{
    "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
    "org.freedesktop.Notifications", "Notify", platform::BusActivation::ifNeeded};

}  // namespace

void showNotification(platform::Bus& sessionBus, const DesktopNotification& notification) {
  const std::string summary = tidewell::cleaned(notification.summary);
  // Most servers read markup in the body, and some do not.
  const std::string body = tidewell::withoutMarkup(tidewell::cleaned(notification.body));
  sessionBus.send(kNotify, [&](sd_bus_message* call) {
    // -1 asks for the desktop's usual time.
    return sd_bus_message_append(call, "susssasa{sv}i", "Staylit", 0U, "com.staylit.app",
                                 summary.c_str(), body.c_str(), 0, 1, "desktop-entry", "s",
                                 "com.staylit.app", -1);
  });
}

}  // namespace staylit
