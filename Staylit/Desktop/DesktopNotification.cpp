#include "Staylit/Desktop/DesktopNotification.h"

namespace staylit {
namespace {

constexpr platform::BusMethod kNotify{
    "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
    "org.freedesktop.Notifications", "Notify", platform::BusActivation::ifNeeded};

}  // namespace

void showNotification(platform::Bus& sessionBus, const DesktopNotification& notification) {
  sessionBus.send(kNotify, [&notification](sd_bus_message* call) {
    // -1: for as long as the desktop usually shows such a thing.
    return sd_bus_message_append(call, "susssasa{sv}i", "Staylit", 0U, "com.staylit.app",
                                 notification.summary.c_str(), notification.body.c_str(), 0, 1,
                                 "desktop-entry", "s", "com.staylit.app", -1);
  });
}

}  // namespace staylit
